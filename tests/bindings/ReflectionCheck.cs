// Holds the C# binding against the table of exports by reflection, and then calls the native library
// through it, whose plain names a .config file beside the assembly maps to the decorated ones.
//
//   ReflectionCheck.exe TABLE    what scripts/make_bindings.py --list prints
//
// Exit status: 0 if all is well.

using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text;
using Launcher;

internal static class ReflectionCheck
{
    private static int faults;

    // The types by which each C type may be passed.
    private static readonly Dictionary<string, Type[]> Types = new Dictionary<string, Type[]>
    {
        { "void", new[] { typeof(void) } },
        { "int32_t", new[] { typeof(int) } },
        { "ResultCode", new[] { typeof(int) } },
        { "CipherCode", new[] { typeof(int) } },
        { "StringLabel", new[] { typeof(int) } },
        { "uint8_t", new[] { typeof(byte) } },
        { "uint32_t", new[] { typeof(uint) } },
        { "uint64_t", new[] { typeof(ulong) } },
        { "void*", new[] { typeof(byte[]), typeof(IntPtr) } },
        { "const void*", new[] { typeof(byte[]) } },
        { "uint8_t*", new[] { typeof(byte[]) } },
        { "const uint8_t*", new[] { typeof(byte[]) } },
        { "char*", new[] { typeof(byte[]) } },
        { "const char*", new[] { typeof(string) } },
        { "void**", new[] { typeof(IntPtr).MakeByRefType() } },
        { "char**", new[] { typeof(IntPtr).MakeByRefType() } },
        { "uint32_t*", new[] { typeof(uint).MakeByRefType() } },
        { "int32_t*", new[] { typeof(int).MakeByRefType() } },
        { "SystemInformation*", new[] { typeof(SystemInformation).MakeByRefType() } },
    };

    private static void Expect(string what, object found, object wanted)
    {
        if (Equals(found, wanted)) return;
        ++faults;
        Console.Error.WriteLine("{0}: found {1}, wanted {2}", what, found, wanted);
    }

    private static void ExpectType(string what, Type found, string cType)
    {
        if (!Types[cType].Contains(found)) Expect(what, found, cType);
    }

    private static void CheckDeclarations(string table)
    {
        const BindingFlags all = BindingFlags.Static | BindingFlags.Public | BindingFlags.NonPublic;
        Dictionary<string, MethodInfo> methods = typeof(NativeMethods).GetMethods(all)
            .Where(m => m.GetCustomAttribute<DllImportAttribute>() != null)
            .ToDictionary(m => m.GetCustomAttribute<DllImportAttribute>().EntryPoint);
        string[] rows = File.ReadAllLines(table);
        Expect("exports in the table", rows.Length, 60);
        Expect("imports in the assembly", methods.Count, 60);
        foreach (string row in rows)
        {
            string[] columns = row.Split('\t');
            string decorated = columns[0];
            MethodInfo method;
            if (!methods.TryGetValue(decorated, out method))
            {
                Expect(decorated, "nothing", "an import");
                continue;
            }
            DllImportAttribute import = method.GetCustomAttribute<DllImportAttribute>();
            ParameterInfo[] parameters = method.GetParameters();
            Expect(decorated + ", name", method.Name, columns[1]);
            Expect(decorated + ", library", import.Value, "LauncherDll.dll");
            Expect(decorated + ", convention", import.CallingConvention, CallingConvention.StdCall);
            Expect(decorated + ", exact name", import.ExactSpelling, true);
            Expect(decorated + ", result as it is", import.PreserveSig, true);
            Expect(decorated + ", argument bytes", 4 * parameters.Length,
                int.Parse(decorated.Split('@')[1]));
            ExpectType(decorated + ", result", method.ReturnType, columns[2]);
            for (int i = 0; i < Math.Min(parameters.Length, columns.Length - 3); ++i)
            {
                string argument = decorated + ", " + parameters[i].Name;
                string cType = columns[i + 3];
                ExpectType(argument, parameters[i].ParameterType, cType);
                if (cType == "const char*")
                {
                    Expect(argument + ", character set", import.CharSet, CharSet.Ansi);
                    Expect(argument + ", no best fit", import.BestFitMapping, false);
                    Expect(argument + ", no question marks", import.ThrowOnUnmappableChar, true);
                }
                // What an export writes has to come back.
                if (parameters[i].ParameterType == typeof(byte[]) && !cType.StartsWith("const "))
                {
                    Expect(argument + ", out", parameters[i].IsOut, true);
                }
            }
        }
        Expect("size of SystemInformation", Marshal.SizeOf(typeof(SystemInformation)), 176);
        Expect("offset of BuildName",
            (int)Marshal.OffsetOf(typeof(SystemInformation), "BuildName"), 16);
        Expect("offset of VendorName",
            (int)Marshal.OffsetOf(typeof(SystemInformation), "VendorName"), 48);
    }

    private static string ExceptionOf(Action action)
    {
        try
        {
            action();
        }
        catch (LauncherException exception)
        {
            return exception.Export + " " + exception.Result;
        }
        return "";
    }

    private static void CheckCalls()
    {
        byte[] data = Encoding.ASCII.GetBytes("some data");
        byte[] signed = LauncherDll.Encode(LauncherDll.Sign(data));
        byte[] bare = LauncherDll.Encode(data);
        byte[] key = Encoding.ASCII.GetBytes(LauncherDll.LoadText(11000));
        Func<byte[], string> text = bytes => Encoding.ASCII.GetString(bytes);
        Expect("payload", text(LauncherDll.Decode(bare)), "some data");
        Expect("payload by key", text(LauncherDll.Decode(bare, key)), "some data");
        Expect("marker kept", text(LauncherDll.Decode(signed)),
            LauncherDll.LoadText(11001) + "some data");
        Expect("marker stripped", text(LauncherDll.Decode(signed, key, Marker.Strip)), "some data");
        Expect("no marker stripped", text(LauncherDll.Decode(bare, key, Marker.Strip)), "some data");
        Expect("marker required", text(LauncherDll.Decode(signed, key, Marker.Require)), "some data");
        Expect("marker missing",
            ExceptionOf(() => LauncherDll.Decode(bare, key, Marker.Require)), "file_cipher_decode 7");
        Expect("other key", ExceptionOf(() => LauncherDll.Decode(bare, data)), "file_cipher_decode 7");
        Expect("empty payload", ExceptionOf(() => LauncherDll.Encode(new byte[0])),
            "file_cipher_encode 7");
        Expect("marker alone", LauncherDll.Sign(new byte[0]).Length, 22);
        Expect("text", LauncherDll.LoadText(2001), "Forbidden");
        Expect("label outside", ExceptionOf(() => LauncherDll.LoadText(1)),
            "QX_LoadStringToMemory -4");

        SystemInformation record = LauncherDll.ReadSystemInformation();
        Expect("numbers", string.Join(" ", record.Numbers), "0 2 5 0");
        Expect("build name", LauncherDll.TextIn(record.BuildName), LauncherDll.LoadText(10));
        Expect("vendor name", LauncherDll.TextIn(record.VendorName), LauncherDll.LoadText(0));

        byte[] line = Encoding.ASCII.GetBytes("abc00001a2b\0");
        uint number;
        Expect("right number", NativeMethods.QX_RightDWORD(out number, line), 0);
        Expect("right number's value", number, 0x1A2Bu);
        Expect("right number's text", LauncherDll.TextIn(line), "abc");
        IntPtr block;
        Expect("allocation", NativeMethods.QX_Allocate(out block, 8), 0);
        Expect("allocated byte", Marshal.ReadByte(block, 7), (byte)0);
        Expect("deallocation", NativeMethods.QX_Deallocate(block), 0);
        Expect("server", NativeMethods.QX_CheckCert("x", LauncherDll.LoadText(5000)), (byte)1);
        Expect("other server", NativeMethods.QX_CheckCert("x", "y"), (byte)0);
        Expect("identifier", NativeMethods.QX_SteamAPI_GetSteamIDConvertToUint64(), 0UL);
    }

    private static int Main(string[] arguments)
    {
        CheckDeclarations(arguments[0]);
        if (faults == 0) CheckCalls();
        return faults == 0 ? 0 : 1;
    }
}
