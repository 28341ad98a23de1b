// Made by scripts/make_bindings.py from src/frame/exports.json.

using System;
using System.Runtime.InteropServices;

namespace Launcher
{
    /// <summary>The library's description of itself: 176 bytes.</summary>
    [StructLayout(LayoutKind.Sequential, Pack = 4)]
    public struct SystemInformation
    {
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 4)]
        public uint[] Numbers;
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 32)]
        public byte[] BuildName;
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 128)]
        public byte[] VendorName;
    }

    /// <summary>The exports; launcher_dll.h describes them. Text arguments are strings, text
    /// results are bytes with a terminator. Null is allowed if C allows it, except for out
    /// arguments.</summary>
    public static class NativeMethods
    {
        private const string Library = "LauncherDll.dll";

        [DllImport(Library, EntryPoint = "_QX_Allocate@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_Allocate(out IntPtr block, uint size);

        [DllImport(Library, EntryPoint = "_QX_CheckCert@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern byte QX_CheckCert(string certificateName, string hostName);

        [DllImport(Library, EntryPoint = "_QX_CheckDisplayMode@20",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_CheckDisplayMode(
            uint adapter,
            uint reserved,
            int width,
            int height,
            uint refreshRate);

        [DllImport(Library, EntryPoint = "_QX_CommandLineToArgvA@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_CommandLineToArgvA(
            out IntPtr block,
            uint capacity,
            out int count);

        [DllImport(Library, EntryPoint = "_QX_CreateProcess@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_CreateProcess(string clientPath, byte[] data, uint dataSize);

        [DllImport(Library, EntryPoint = "_QX_Deallocate@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_Deallocate(IntPtr block);

        [DllImport(Library, EntryPoint = "_QX_Decode@20",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_Decode(
            [In, Out] byte[] block,
            int blockSize,
            out uint payloadSize,
            out uint payloadOffset,
            uint checkMarker);

        [DllImport(Library, EntryPoint = "_QX_Encode@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_Encode([In, Out] byte[] output, byte[] payload, int size);

        [DllImport(Library, EntryPoint = "_QX_EnumDisplayMode@16",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern uint QX_EnumDisplayMode(
            uint adapter,
            uint reserved,
            [In, Out] byte[] buffer,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_ExistClient@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern byte QX_ExistClient();

        [DllImport(Library, EntryPoint = "_QX_GetEncodeDataSize@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern uint QX_GetEncodeDataSize(uint size);

        [DllImport(Library, EntryPoint = "_QX_GetIllegalValue@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_GetIllegalValue();

        [DllImport(Library, EntryPoint = "_QX_GetLengthOfRString@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern uint QX_GetLengthOfRString(int label);

        [DllImport(Library, EntryPoint = "_QX_GetSignatureSize@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern uint QX_GetSignatureSize();

        [DllImport(Library, EntryPoint = "_QX_GetSystemInformation@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_GetSystemInformation(out SystemInformation record, uint size);

        [DllImport(Library, EntryPoint = "_QX_IsFailed@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_IsFailed(int value);

        [DllImport(Library, EntryPoint = "_QX_IsStaging@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_IsStaging();

        [DllImport(Library, EntryPoint = "_QX_IsSucceeded@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_IsSucceeded(int value);

        [DllImport(Library, EntryPoint = "_QX_LoadString@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_LoadString(
            int label,
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_LoadStringToMemory@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_LoadStringToMemory(int label, out IntPtr text);

        [DllImport(Library, EntryPoint = "_QX_RemoveDirectory@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_RemoveDirectory(string path, uint keepDirectory);

        [DllImport(Library, EntryPoint = "_QX_RemoveFile@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_RemoveFile(string path);

        [DllImport(Library, EntryPoint = "_QX_ResetIllegalValue@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_ResetIllegalValue();

        [DllImport(Library, EntryPoint = "_QX_RightAddress@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_RightAddress(out uint address, string text);

        [DllImport(Library, EntryPoint = "_QX_RightBinary@16",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_RightBinary(
            [In, Out] byte[] destination,
            uint capacity,
            string text,
            uint count);

        [DllImport(Library, EntryPoint = "_QX_RightDWORD@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_RightDWORD(out uint value, [In, Out] byte[] text);

        [DllImport(Library, EntryPoint = "_QX_SignSignature@16",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern byte QX_SignSignature(
            [In, Out] byte[] destination,
            uint capacity,
            byte[] data,
            uint dataSize);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_CatUserFilePath@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_CatUserFilePath(
            [In, Out] byte[] destination,
            int capacity,
            string fileName);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetAvailableGameLanguages@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetAvailableGameLanguages(
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetCurrentGameLanguage@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetCurrentGameLanguage(
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetMirvelURL@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetMirvelURL(uint first, uint second, uint third);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetPersonaName@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetPersonaName(
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetSteamAuthTicket@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetSteamAuthTicket(
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetSteamIDConvertToUint64@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern ulong QX_SteamAPI_GetSteamIDConvertToUint64();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_GetUserDataFolder@8",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_GetUserDataFolder(
            [In, Out] byte[] destination,
            int capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_HTTPRequest@20",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_HTTPRequest(
            string url,
            int method,
            string contentType,
            byte[] body,
            uint bodyLength);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_Init@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_Init();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_IsFileExist@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_IsFileExist(string fileName);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_IsLoggedOn@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern byte QX_SteamAPI_IsLoggedOn();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_IsSteamRunning@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_IsSteamRunning();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_ReadFile@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_ReadFile(
            string fileName,
            [In, Out] byte[] buffer,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageFileDelete@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageFileDelete(string name);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageFileExist@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageFileExist(string name);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageFileForget@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageFileForget(string name);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageFileRead@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageFileRead(
            string name,
            [In, Out] byte[] buffer,
            int size);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageFileWrite@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageFileWrite(
            string name,
            byte[] data,
            int size);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageGetFileCount@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_RemoteStorageGetFileCount();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageGetFileName@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_RemoteStorageGetFileName(
            int index,
            [In, Out] byte[] destination,
            uint capacity);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageGetFileSize@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_RemoteStorageGetFileSize(string name);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageIsCloudEnabledForApp@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_RemoteStorageIsCloudEnabledForApp();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RemoteStorageSetCloudEnabledForApp@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern byte QX_SteamAPI_RemoteStorageSetCloudEnabledForApp(int enabled);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_RestartAppIfNecessary@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_SteamAPI_RestartAppIfNecessary(uint appId);

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_Shutdown@0",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern void QX_SteamAPI_Shutdown();

        [DllImport(Library, EntryPoint = "_QX_SteamAPI_WriteFile@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int QX_SteamAPI_WriteFile(string fileName, byte[] data, uint size);

        [DllImport(Library, EntryPoint = "_QX_UnloadStringFromMemory@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_UnloadStringFromMemory(ref IntPtr text);

        [DllImport(Library, EntryPoint = "_QX_Unzip@16",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int QX_Unzip(uint first, uint second, uint third, uint fourth);

        [DllImport(Library, EntryPoint = "_file_cipher_decode@28",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true,
            CharSet = CharSet.Ansi, BestFitMapping = false, ThrowOnUnmappableChar = true)]
        public static extern int file_cipher_decode(
            [In, Out] byte[] block,
            uint blockSize,
            byte[] key,
            int keyLength,
            out uint payloadSize,
            out uint payloadOffset,
            string prefix);

        [DllImport(Library, EntryPoint = "_file_cipher_encode@12",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern int file_cipher_encode(
            byte[] payload,
            uint size,
            [In, Out] byte[] output);

        [DllImport(Library, EntryPoint = "_file_cipher_get_encode_size@4",
            CallingConvention = CallingConvention.StdCall, ExactSpelling = true)]
        public static extern uint file_cipher_get_encode_size(uint size);
    }
}
