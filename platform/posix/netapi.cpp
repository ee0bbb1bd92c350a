#include "platform/netapi.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/password_database.h"
#include "platform/posix/record_block.h"
#include "platform/utf.h"

namespace platform {

namespace {

constexpr DWORD kPlatformNt = 500;
constexpr DWORD kPrivilegeUser = 1;
constexpr DWORD kUnlimited = 0xFFFFFFFF;
constexpr DWORD kHoursPerWeek = 168;

/// A block for NetApiBufferFree.
template <typename Record>
NET_API_STATUS HandOut(Record record, const RecordTexts<Record>& texts, BYTE** buffer) {
  void* block = std::malloc(sizeof record + TextSize(texts));
  if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  auto* copy = new (block) Record(record);
  PutTexts(*copy, texts, reinterpret_cast<wchar_t*>(copy + 1));
  *buffer = static_cast<BYTE*>(block);
  return NERR_Success;
}

NET_API_STATUS HandOutText(std::wstring_view text, LPWSTR* buffer) {
  auto* block = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
  if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  block[text.copy(block, text.size())] = L'\0';
  *buffer = block;
  return NERR_Success;
}

bool IsHere(LPCWSTR server) {
  return server == nullptr || *server == L'\0';
}

/// What each operation begins with and ends in. `work` gives the result.
template <typename Buffer, typename Work>
NET_API_STATUS Answer(const char* operation, Buffer** out, Work work) {
  if (out == nullptr) return ERROR_INVALID_PARAMETER;
  *out = nullptr;
  if (const auto fault = TakeFault(operation)) return *fault;
  try {
    return work(LoadMachine());
  } catch (const std::system_error& error) {
    return ErrorOf(error.code().value());
  }
}

/// In capitals and at most 15 units, as machines are named.
std::wstring ComputerName() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  std::string text(name);
  text = text.substr(0, std::min<std::size_t>(text.find('.'), 15));
  for (char& each : text)
    if (each >= 'a' && each <= 'z') each = static_cast<char>(each - 'a' + 'A');
  return FromUtf8(text);
}

bool IsController(const Machine& machine, std::wstring_view server) {
  return !machine.controller.empty() && SameServer(machine.controller, server);
}

/// The account of a list in the machine's description; null: not there. The machine's own accounts
/// have an empty `server`.
std::optional<Account> FindDescribed(const Machine& machine, std::wstring_view server,
                                     std::wstring_view login) {
  for (const AccountList& list : machine.accountLists) {
    if (!SameServer(list.server, server)) continue;
    for (const Account& account : list.accounts)
      if (SameName(account.login, login)) return account;
  }
  return std::nullopt;
}

std::optional<Account> FindLocal(const Machine& machine, std::wstring_view login) {
  if (auto account = FindDescribed(machine, L"", login)) return account;
  if (const auto user = FindUser(login)) return Account{user->login, user->fullName};
  return std::nullopt;
}

NET_API_STATUS HandOutLevel10(const Account& account, BYTE** buffer) {
  RecordTexts<USER_INFO_10> texts = {{&USER_INFO_10::usri10_name, account.login},
                                     {&USER_INFO_10::usri10_comment, L""},
                                     {&USER_INFO_10::usri10_usr_comment, L""}};
  if (account.fullName) texts.push_back({&USER_INFO_10::usri10_full_name, *account.fullName});
  return HandOut(USER_INFO_10{}, texts, buffer);
}

NET_API_STATUS HandOutLevel11(const Account& account, BYTE** buffer) {
  using Info = USER_INFO_11;
  RecordTexts<Info> texts = {
      {&Info::usri11_name, account.login}, {&Info::usri11_comment, L""},
      {&Info::usri11_usr_comment, L""},    {&Info::usri11_home_dir, L""},
      {&Info::usri11_parms, L""},          {&Info::usri11_logon_server, LR"(\\*)"},
      {&Info::usri11_workstations, L""},
  };
  if (account.fullName) texts.push_back({&Info::usri11_full_name, *account.fullName});
  Info record{};
  record.usri11_priv = kPrivilegeUser;
  record.usri11_max_storage = kUnlimited;
  record.usri11_units_per_week = kHoursPerWeek;
  return HandOut(record, texts, buffer);
}

NET_API_STATUS CopyUserName(std::wstring_view user, LPWSTR name, DWORD& size) {
  const DWORD capacity = size;
  size = static_cast<DWORD>(user.size()) + 1;
  if (name == nullptr || capacity < size) return ERROR_INSUFFICIENT_BUFFER;
  name[user.copy(name, user.size())] = L'\0';
  return NERR_Success;
}

}  // namespace

}  // namespace platform

using platform::Machine;

NET_API_STATUS NetWkstaGetInfo(LPWSTR server, DWORD level, BYTE** record) {
  return platform::Answer("NetWkstaGetInfo", record, [=](const Machine& machine) {
    if (!platform::IsHere(server)) return ERROR_BAD_NETPATH;
    if (level != 100) return ERROR_INVALID_LEVEL;
    WKSTA_INFO_100 info{};
    info.wki100_platform_id = platform::kPlatformNt;
    info.wki100_ver_major = 10;
    return platform::HandOut(info,
                             {{&WKSTA_INFO_100::wki100_computername, platform::ComputerName()},
                              {&WKSTA_INFO_100::wki100_langroup, machine.domain}},
                             record);
  });
}

NET_API_STATUS NetGetJoinInformation(LPCWSTR server, LPWSTR* name, NETSETUP_JOIN_STATUS* status) {
  if (status == nullptr) return ERROR_INVALID_PARAMETER;
  *status = NetSetupUnknownStatus;
  return platform::Answer("NetGetJoinInformation", name, [=](const Machine& machine) {
    if (!platform::IsHere(server)) return ERROR_BAD_NETPATH;
    *status = machine.joined ? NetSetupDomainName : NetSetupWorkgroupName;
    return platform::HandOutText(machine.domain, name);
  });
}

NET_API_STATUS NetGetDCName(LPCWSTR server, LPCWSTR domain, BYTE** name) {
  return platform::Answer("NetGetDCName", name, [=](const Machine& machine) {
    if (!platform::IsHere(server)) return ERROR_BAD_NETPATH;
    const bool isOwn =
        domain == nullptr || *domain == L'\0' || platform::SameName(domain, machine.domain);
    if (!machine.joined || !isOwn || machine.controller.empty()) return NERR_DCNotFound;
    const bool isBare = !machine.controller.starts_with(LR"(\\)");
    return platform::HandOutText((isBare ? LR"(\\)" : L"") + machine.controller,
                                 reinterpret_cast<LPWSTR*>(name));
  });
}

NET_API_STATUS NetUserGetInfo(LPCWSTR server, LPCWSTR user, DWORD level, BYTE** record) {
  return platform::Answer("NetUserGetInfo", record, [=](const Machine& machine) {
    if (user == nullptr) return ERROR_INVALID_PARAMETER;
    if (level != 10 && level != 11) return ERROR_INVALID_LEVEL;
    const bool isHere = platform::IsHere(server);
    if (!isHere && !platform::IsController(machine, server)) return ERROR_BAD_NETPATH;
    const auto account = isHere ? platform::FindLocal(machine, user)
                                : platform::FindDescribed(machine, server, user);
    if (!account) return NERR_UserNotFound;
    return level == 10 ? platform::HandOutLevel10(*account, record)
                       : platform::HandOutLevel11(*account, record);
  });
}

NET_API_STATUS NetApiBufferFree(LPVOID buffer) {
  std::free(buffer);
  return NERR_Success;
}

BOOL GetUserNameW(LPWSTR name, LPDWORD size) {
  if (platform::IsToFail("GetUserNameW")) return FALSE;
  if (size == nullptr) return platform::FailWith(ERROR_INVALID_PARAMETER);
  NET_API_STATUS result = NERR_Success;
  try {
    result = platform::CopyUserName(platform::LoadMachine().user, name, *size);
  } catch (const std::system_error& error) {
    result = platform::ErrorOf(error.code().value());
  }
  return result == NERR_Success ? TRUE : platform::FailWith(result);
}
