#pragma once

// Names that the library shares with other programs of the client. Nothing here logs.

/// The user information file, to be appended to the setting folder; its section and keys.
constexpr wchar_t kUserInformationName[] = L"\\UserInfoWM.ini";
constexpr wchar_t kUserSection[] = L"User";
constexpr wchar_t kUserStateKey[] = L"GetUserState";
constexpr wchar_t kUserFullNameKey[] = L"UserFullName";
constexpr wchar_t kUserDomainKey[] = L"DomainName";
constexpr wchar_t kUserLoginKey[] = L"LoginID";

/// The pipe of the watermark control service.
constexpr wchar_t kControlPipe[] = L"\\\\.\\pipe\\hlwatermark";
