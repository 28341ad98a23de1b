using System;
using System.Runtime.InteropServices;
using System.Text;

namespace Launcher
{
    /// <summary>An export failed.</summary>
    public sealed class LauncherException : Exception
    {
        public LauncherException(string export, int result, string reason = null)
            : base(export + " failed: " + (reason ?? "it returned " + result))
        {
            Export = export;
            Result = result;
        }

        /// <summary>The export's name.</summary>
        public string Export { get; private set; }

        /// <summary>What the export returned.</summary>
        public int Result { get; private set; }
    }

    /// <summary>What to do with a signature marker at the start of a payload.</summary>
    public enum Marker
    {
        Keep,

        /// <summary>Remove it if it is there.</summary>
        Strip,

        /// <summary>Remove it; refuse a payload without it.</summary>
        Require
    }

    /// <summary>Texts and containers; NativeMethods has the other exports. A failure throws
    /// LauncherException.</summary>
    public static class LauncherDll
    {
        private const int KeyLabel = 11000;
        private const int CipherFailed = 7;

        /// <summary>A text of the string table. Prints a line to the C runtime's standard output,
        /// and reads or creates config.json in the current directory.</summary>
        public static string LoadText(int label)
        {
            IntPtr text;
            Check("QX_LoadStringToMemory", NativeMethods.QX_LoadStringToMemory(label, out text));
            try
            {
                int length = 0;
                while (Marshal.ReadByte(text, length) != 0) ++length;
                byte[] bytes = new byte[length];
                Marshal.Copy(text, bytes, 0, length);
                return Encoding.UTF8.GetString(bytes);
            }
            finally
            {
                NativeMethods.QX_UnloadStringFromMemory(ref text);
            }
        }

        /// <summary>The library's description of itself. Looks up two texts, as LoadText does.</summary>
        public static SystemInformation ReadSystemInformation()
        {
            SystemInformation record;
            Check("QX_GetSystemInformation", NativeMethods.QX_GetSystemInformation(
                out record, (uint)Marshal.SizeOf(typeof(SystemInformation))));
            return record;
        }

        /// <summary>The text in a buffer that an export filled.</summary>
        public static string TextIn(byte[] buffer)
        {
            int end = Array.IndexOf(buffer, (byte)0);
            return Encoding.UTF8.GetString(buffer, 0, end < 0 ? buffer.Length : end);
        }

        /// <summary>The container for a payload of 1 byte or more, with the built-in key.</summary>
        public static byte[] Encode(byte[] payload)
        {
            byte[] output =
                new byte[NativeMethods.file_cipher_get_encode_size((uint)payload.Length)];
            Check("file_cipher_encode",
                NativeMethods.file_cipher_encode(payload, (uint)payload.Length, output));
            return output;
        }

        /// <summary>The payload of a container of any size, deciphered with a key of 4 to 56 bytes;
        /// null means the key of the string table, which LoadText looks up. The container is
        /// not changed.</summary>
        public static byte[] Decode(byte[] container, byte[] key = null, Marker marker = Marker.Keep)
        {
            if (key == null) key = Encoding.ASCII.GetBytes(LoadText(KeyLabel));
            string prefix = marker == Marker.Keep ? null : Encoding.ASCII.GetString(Sign(new byte[0]));
            byte[] block = (byte[])container.Clone();
            // The outputs are written if the container is intact, even if the prefix is missing.
            uint size = 0;
            uint offset = 0;
            int result = NativeMethods.file_cipher_decode(
                block, (uint)block.Length, key, key.Length, out size, out offset, prefix);
            if (offset == 0)
            {
                throw new LauncherException("file_cipher_decode", result,
                    "no intact container under this key");
            }
            if (result != 0 && marker == Marker.Require)
            {
                throw new LauncherException("file_cipher_decode", result,
                    "the signature marker is missing");
            }
            byte[] payload = new byte[size];
            Array.Copy(block, (long)offset, payload, 0, (long)size);
            return payload;
        }

        /// <summary>The signature marker and then the data: a payload for Encode.</summary>
        public static byte[] Sign(byte[] data)
        {
            byte[] payload = new byte[NativeMethods.QX_GetSignatureSize() + data.Length];
            // The runtime may pass an empty array as null, which the export refuses.
            byte[] source = data.Length == 0 ? new byte[1] : data;
            if (NativeMethods.QX_SignSignature(
                payload, (uint)payload.Length, source, (uint)data.Length) != 1)
            {
                throw new LauncherException("QX_SignSignature", 0);
            }
            return payload;
        }

        private static void Check(string export, int result)
        {
            if (result != 0) throw new LauncherException(export, result);
        }
    }
}
