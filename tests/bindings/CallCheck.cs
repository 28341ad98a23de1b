// Finds what the C# binding can do wrong: another calling convention or size of the arguments, a
// direction that loses what the library writes, a failure without an exception, a text cut short.
// A .config file beside the assembly maps the decorated names to the plain ones.

using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text;
using Launcher;

internal static class CallCheck
{
    private static int faults;

    private static void Expect(string what, object found, object wanted)
    {
        if (Equals(found, wanted)) return;
        ++faults;
        Console.Error.WriteLine("{0}: found {1}, wanted {2}", what, found, wanted);
    }

    private static string ResultOf(Func<byte[]> decode)
    {
        try
        {
            return Encoding.ASCII.GetString(decode());
        }
        catch (LauncherException exception)
        {
            return exception.Export + " " + exception.Result;
        }
    }

    private static int Main()
    {
        foreach (MethodInfo method in typeof(NativeMethods).GetMethods().Where(m => m.IsStatic))
        {
            DllImportAttribute import = method.GetCustomAttribute<DllImportAttribute>();
            string name = "_" + method.Name + "@" + 4 * method.GetParameters().Length;
            Expect("name", import.EntryPoint, name);
            Expect(name, import.CallingConvention, CallingConvention.StdCall);
        }

        byte[] data = Encoding.ASCII.GetBytes("some data");
        byte[] bare = LauncherDll.Encode(data);
        byte[] signed = LauncherDll.Encode(LauncherDll.Sign(data));
        byte[] key = Encoding.ASCII.GetBytes(LauncherDll.LoadText(11000));
        string marker = LauncherDll.LoadText(11001);
        Expect("bare", ResultOf(() => LauncherDll.Decode(bare)), "some data");
        Expect("no marker", ResultOf(() => LauncherDll.Decode(bare, key, Marker.Strip)), "some data");
        Expect("kept", ResultOf(() => LauncherDll.Decode(signed, key)), marker + "some data");
        Expect("stripped", ResultOf(() => LauncherDll.Decode(signed, key, Marker.Strip)), "some data");
        Expect("required", ResultOf(() => LauncherDll.Decode(signed, key, Marker.Require)),
            "some data");
        Expect("missing", ResultOf(() => LauncherDll.Decode(bare, key, Marker.Require)),
            "file_cipher_decode 7");
        Expect("other key", ResultOf(() => LauncherDll.Decode(bare, data)), "file_cipher_decode 7");
        Expect("empty", ResultOf(() => LauncherDll.Encode(new byte[0])), "file_cipher_encode 7");
        Expect("no data", ResultOf(() => LauncherDll.Sign(new byte[0])), marker);
        Expect("text", LauncherDll.LoadText(2001), "Forbidden");
        Expect("no text", ResultOf(() => new byte[LauncherDll.LoadText(1).Length]),
            "QX_LoadStringToMemory -4");

        SystemInformation record = LauncherDll.ReadSystemInformation();
        Expect("numbers", string.Join(" ", record.Numbers), "0 2 5 0");
        Expect("build name", LauncherDll.TextIn(record.BuildName), LauncherDll.LoadText(10));
        Expect("vendor name", LauncherDll.TextIn(record.VendorName), LauncherDll.LoadText(0));
        byte[] line = Encoding.ASCII.GetBytes("abc00001a2b\0");
        uint number;
        Expect("right number", NativeMethods.QX_RightDWORD(out number, line), 0);
        Expect("its value and text", number + LauncherDll.TextIn(line), "6699abc");
        Expect("server", NativeMethods.QX_CheckCert("x", LauncherDll.LoadText(5000)), (byte)1);
        return faults == 0 ? 0 : 1;
    }
}
