#pragma once

// Names that the library shares with every program that uses the Settings component. Nothing here
// logs.

/// The Settings component's file, in the folder of the host's executable, and its entry.
constexpr wchar_t kComponentFile[] = L"SigilUtil_x86.dll";
constexpr char kCreateInstanceName[] = "SigilCreateInstance";

/// The system-wide mutex of the setting file.
constexpr wchar_t kSettingMutexName[] = L"Global\\MIMOSA_HLE_SIGIL_SETTING";
