// Finds what the C# binding can do wrong: a type or direction that loses what the library writes, a
// failure without an exception, a text that is cut. bindings_are_current checks all declarations.

using System;
using System.Text;
using Launcher;

internal static class CallCheck
{
    private static void Expect(string wanted, Func<object> call)
    {
        object found;
        try
        {
            found = call();
        }
        catch (LauncherException failure)
        {
            found = failure.Export + " " + failure.Result;
        }
        if (found is byte[]) found = Encoding.ASCII.GetString((byte[])found);
        if (found.ToString() != wanted) throw new Exception(found + " instead of " + wanted);
    }

    private static void Main()
    {
        byte[] data = Encoding.ASCII.GetBytes("data");
        byte[] bare = LauncherDll.Encode(data);
        byte[] signed = LauncherDll.Encode(LauncherDll.Sign(data));
        string marker = LauncherDll.LoadText(11001);
        Expect(marker, () => LauncherDll.Sign(new byte[0]));
        Expect(marker + "data", () => LauncherDll.Decode(signed));
        Expect("data", () => LauncherDll.Decode(bare, null, Marker.Strip));
        Expect("data", () => LauncherDll.Decode(signed, null, Marker.Strip));
        Expect("data", () => LauncherDll.Decode(signed, null, Marker.Require));
        Expect("file_cipher_decode 7", () => LauncherDll.Decode(bare, null, Marker.Require));
        Expect("file_cipher_decode 7", () => LauncherDll.Decode(bare, data));
        Expect("QX_LoadStringToMemory -4", () => LauncherDll.LoadText(1));
        SystemInformation record = LauncherDll.ReadSystemInformation();
        Expect("0 2 5 0", () => string.Join(" ", record.Numbers));
        Expect(LauncherDll.LoadText(0), () => LauncherDll.TextIn(record.VendorName));
        Expect("AB", () => LauncherDll.TextIn(new byte[] { 65, 66 }));
        byte[] line = Encoding.ASCII.GetBytes("abc80001a2b\0");
        uint number = 0;
        Expect("0", () => NativeMethods.QX_RightDWORD(out number, line));
        Expect("2147490347abc", () => number + LauncherDll.TextIn(line));
        Expect("1", () => NativeMethods.QX_CheckCert("x", LauncherDll.LoadText(5000)));
    }
}
