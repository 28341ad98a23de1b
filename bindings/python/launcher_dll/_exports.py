# Made by scripts/make_bindings.py from src/frame/exports.json: the types of each export for ctypes.

from ctypes import (POINTER, Structure, c_char, c_char_p, c_int32, c_uint8, c_uint32,
                    c_uint64, c_void_p)
from typing import Any, Dict, List, Tuple

VERSION = "1.0.0"


class SystemInformation(Structure):
    """The record that QX_GetSystemInformation fills: 176 bytes."""

    _fields_ = [("numbers", c_uint32 * 4), ("buildName", c_char * 32),
                ("vendorName", c_char * 128)]


# By name: the name in the DLL, the result's type, the arguments' types.
EXPORTS: Dict[str, Tuple[str, Any, List[Any]]] = {
    "QX_Allocate": (
        "_QX_Allocate@8", c_int32,
        [POINTER(c_void_p), c_uint32]),
    "QX_CheckCert": (
        "_QX_CheckCert@8", c_uint8,
        [c_char_p, c_char_p]),
    "QX_CheckDisplayMode": (
        "_QX_CheckDisplayMode@20", c_int32,
        [c_uint32, c_uint32, c_int32, c_int32, c_uint32]),
    "QX_CommandLineToArgvA": (
        "_QX_CommandLineToArgvA@12", c_int32,
        [POINTER(c_char_p), c_uint32, POINTER(c_int32)]),
    "QX_CreateProcess": (
        "_QX_CreateProcess@12", c_int32,
        [c_char_p, c_void_p, c_uint32]),
    "QX_Deallocate": (
        "_QX_Deallocate@4", c_int32,
        [c_void_p]),
    "QX_Decode": (
        "_QX_Decode@20", c_int32,
        [c_void_p, c_int32, POINTER(c_uint32), POINTER(c_uint32), c_uint32]),
    "QX_Encode": (
        "_QX_Encode@12", c_int32,
        [c_void_p, c_void_p, c_int32]),
    "QX_EnumDisplayMode": (
        "_QX_EnumDisplayMode@16", c_uint32,
        [c_uint32, c_uint32, c_char_p, c_uint32]),
    "QX_ExistClient": (
        "_QX_ExistClient@0", c_uint8,
        []),
    "QX_GetEncodeDataSize": (
        "_QX_GetEncodeDataSize@4", c_uint32,
        [c_uint32]),
    "QX_GetIllegalValue": (
        "_QX_GetIllegalValue@0", c_int32,
        []),
    "QX_GetLengthOfRString": (
        "_QX_GetLengthOfRString@4", c_uint32,
        [c_int32]),
    "QX_GetSignatureSize": (
        "_QX_GetSignatureSize@0", c_uint32,
        []),
    "QX_GetSystemInformation": (
        "_QX_GetSystemInformation@8", c_int32,
        [POINTER(SystemInformation), c_uint32]),
    "QX_IsFailed": (
        "_QX_IsFailed@4", c_int32,
        [c_int32]),
    "QX_IsStaging": (
        "_QX_IsStaging@0", c_int32,
        []),
    "QX_IsSucceeded": (
        "_QX_IsSucceeded@4", c_int32,
        [c_int32]),
    "QX_LoadString": (
        "_QX_LoadString@12", c_int32,
        [c_int32, c_char_p, c_uint32]),
    "QX_LoadStringToMemory": (
        "_QX_LoadStringToMemory@8", c_int32,
        [c_int32, POINTER(c_char_p)]),
    "QX_RemoveDirectory": (
        "_QX_RemoveDirectory@8", c_int32,
        [c_char_p, c_uint32]),
    "QX_RemoveFile": (
        "_QX_RemoveFile@4", c_int32,
        [c_char_p]),
    "QX_ResetIllegalValue": (
        "_QX_ResetIllegalValue@0", c_int32,
        []),
    "QX_RightAddress": (
        "_QX_RightAddress@8", c_int32,
        [POINTER(c_uint32), c_char_p]),
    "QX_RightBinary": (
        "_QX_RightBinary@16", c_int32,
        [c_void_p, c_uint32, c_char_p, c_uint32]),
    "QX_RightDWORD": (
        "_QX_RightDWORD@8", c_int32,
        [POINTER(c_uint32), c_char_p]),
    "QX_SignSignature": (
        "_QX_SignSignature@16", c_uint8,
        [c_void_p, c_uint32, c_void_p, c_uint32]),
    "QX_SteamAPI_CatUserFilePath": (
        "_QX_SteamAPI_CatUserFilePath@12", c_int32,
        [c_char_p, c_int32, c_char_p]),
    "QX_SteamAPI_GetAvailableGameLanguages": (
        "_QX_SteamAPI_GetAvailableGameLanguages@8", c_int32,
        [c_char_p, c_uint32]),
    "QX_SteamAPI_GetCurrentGameLanguage": (
        "_QX_SteamAPI_GetCurrentGameLanguage@8", c_int32,
        [c_char_p, c_uint32]),
    "QX_SteamAPI_GetMirvelURL": (
        "_QX_SteamAPI_GetMirvelURL@12", c_int32,
        [c_uint32, c_uint32, c_uint32]),
    "QX_SteamAPI_GetPersonaName": (
        "_QX_SteamAPI_GetPersonaName@8", c_int32,
        [c_char_p, c_uint32]),
    "QX_SteamAPI_GetSteamAuthTicket": (
        "_QX_SteamAPI_GetSteamAuthTicket@8", c_int32,
        [c_char_p, c_uint32]),
    "QX_SteamAPI_GetSteamIDConvertToUint64": (
        "_QX_SteamAPI_GetSteamIDConvertToUint64@0", c_uint64,
        []),
    "QX_SteamAPI_GetUserDataFolder": (
        "_QX_SteamAPI_GetUserDataFolder@8", c_int32,
        [c_char_p, c_int32]),
    "QX_SteamAPI_HTTPRequest": (
        "_QX_SteamAPI_HTTPRequest@20", c_int32,
        [c_char_p, c_int32, c_char_p, c_void_p, c_uint32]),
    "QX_SteamAPI_Init": (
        "_QX_SteamAPI_Init@0", c_int32,
        []),
    "QX_SteamAPI_IsFileExist": (
        "_QX_SteamAPI_IsFileExist@4", c_int32,
        [c_char_p]),
    "QX_SteamAPI_IsLoggedOn": (
        "_QX_SteamAPI_IsLoggedOn@0", c_uint8,
        []),
    "QX_SteamAPI_IsSteamRunning": (
        "_QX_SteamAPI_IsSteamRunning@0", c_int32,
        []),
    "QX_SteamAPI_ReadFile": (
        "_QX_SteamAPI_ReadFile@12", c_int32,
        [c_char_p, c_void_p, c_uint32]),
    "QX_SteamAPI_RemoteStorageFileDelete": (
        "_QX_SteamAPI_RemoteStorageFileDelete@4", c_int32,
        [c_char_p]),
    "QX_SteamAPI_RemoteStorageFileExist": (
        "_QX_SteamAPI_RemoteStorageFileExist@4", c_int32,
        [c_char_p]),
    "QX_SteamAPI_RemoteStorageFileForget": (
        "_QX_SteamAPI_RemoteStorageFileForget@4", c_int32,
        [c_char_p]),
    "QX_SteamAPI_RemoteStorageFileRead": (
        "_QX_SteamAPI_RemoteStorageFileRead@12", c_int32,
        [c_char_p, c_void_p, c_int32]),
    "QX_SteamAPI_RemoteStorageFileWrite": (
        "_QX_SteamAPI_RemoteStorageFileWrite@12", c_int32,
        [c_char_p, c_void_p, c_int32]),
    "QX_SteamAPI_RemoteStorageGetFileCount": (
        "_QX_SteamAPI_RemoteStorageGetFileCount@0", c_int32,
        []),
    "QX_SteamAPI_RemoteStorageGetFileName": (
        "_QX_SteamAPI_RemoteStorageGetFileName@12", c_int32,
        [c_int32, c_char_p, c_uint32]),
    "QX_SteamAPI_RemoteStorageGetFileSize": (
        "_QX_SteamAPI_RemoteStorageGetFileSize@4", c_int32,
        [c_char_p]),
    "QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount": (
        "_QX_SteamAPI_RemoteStorageIsCloudEnabledForAccount@0", c_int32,
        []),
    "QX_SteamAPI_RemoteStorageIsCloudEnabledForApp": (
        "_QX_SteamAPI_RemoteStorageIsCloudEnabledForApp@0", c_int32,
        []),
    "QX_SteamAPI_RemoteStorageSetCloudEnabledForApp": (
        "_QX_SteamAPI_RemoteStorageSetCloudEnabledForApp@4", c_uint8,
        [c_int32]),
    "QX_SteamAPI_RestartAppIfNecessary": (
        "_QX_SteamAPI_RestartAppIfNecessary@4", c_int32,
        [c_uint32]),
    "QX_SteamAPI_Shutdown": (
        "_QX_SteamAPI_Shutdown@0", None,
        []),
    "QX_SteamAPI_WriteFile": (
        "_QX_SteamAPI_WriteFile@12", c_int32,
        [c_char_p, c_void_p, c_uint32]),
    "QX_UnloadStringFromMemory": (
        "_QX_UnloadStringFromMemory@4", c_int32,
        [POINTER(c_char_p)]),
    "QX_Unzip": (
        "_QX_Unzip@16", c_int32,
        [c_uint32, c_uint32, c_uint32, c_uint32]),
    "file_cipher_decode": (
        "_file_cipher_decode@28", c_int32,
        [c_void_p, c_uint32, c_void_p, c_int32, POINTER(c_uint32), POINTER(c_uint32), c_char_p]),
    "file_cipher_encode": (
        "_file_cipher_encode@12", c_int32,
        [c_void_p, c_uint32, c_void_p]),
    "file_cipher_get_encode_size": (
        "_file_cipher_get_encode_size@4", c_uint32,
        [c_uint32]),
}
