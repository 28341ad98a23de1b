// Calls the native library through the C# binding: for a wrong type, size or direction of an argument,
// a failure without an exception, and memory that is not copied. A .config file beside the assembly
// maps the decorated names to the plain ones. Exit status: 0 if all is well.

using System;
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

    private static void CheckRecord()
    {
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

    private static int Main()
    {
        CheckRecord();
        CheckCalls();
        return faults == 0 ? 0 : 1;
    }
}
