#include "platform/netapi.h"

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

namespace platform {

namespace {

/// A record with one text, and the text behind it, in a block for NetApiBufferFree.
template <typename Record>
NET_API_STATUS HandOut(const std::optional<std::wstring>& text, LPWSTR Record::*member,
                       BYTE** buffer) {
  const std::size_t units = text ? text->size() + 1 : 0;
  void* const block = std::malloc(sizeof(Record) + units * sizeof(wchar_t));
  if (block == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
  auto* const record = new (block) Record{};
  if (text) {
    record->*member = reinterpret_cast<wchar_t*>(record + 1);
    (record->*member)[text->copy(record->*member, text->size())] = L'\0';
  }
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

/// Runs `work`, which returns the result, unless the operation is to fail. Memory that ends is a
/// result too.
template <typename Buffer, typename Work>
NET_API_STATUS Answer(Buffer** out, Work work) {
  *out = nullptr;
  try {
    return work(LoadMachine());
  } catch (const std::system_error& error) {
    return ErrorOf(error.code().value());
  }
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

NET_API_STATUS CopyUserName(std::wstring_view user, LPWSTR name, DWORD& size) {
  const DWORD capacity = size;
  size = static_cast<DWORD>(user.size()) + 1;
  if (capacity < size) return ERROR_INSUFFICIENT_BUFFER;
  name[user.copy(name, user.size())] = L'\0';
  return NERR_Success;
}

}  // namespace

}  // namespace platform

using platform::Machine;

NET_API_STATUS NetWkstaGetInfo(LPWSTR, DWORD, BYTE** record) {
  return platform::Answer(record, [=](const Machine& machine) {
    if (const auto fault = platform::TakeFault("NetWkstaGetInfo")) return *fault;
    return platform::HandOut(std::optional(machine.domain), &WKSTA_INFO_100::wki100_langroup,
                             record);
  });
}

NET_API_STATUS NetGetJoinInformation(LPCWSTR, LPWSTR* name, NETSETUP_JOIN_STATUS* status) {
  *status = NetSetupUnknownStatus;
  return platform::Answer(name, [=](const Machine& machine) {
    if (const auto fault = platform::TakeFault("NetGetJoinInformation")) return *fault;
    *status = machine.joined ? NetSetupDomainName : NetSetupWorkgroupName;
    return platform::HandOutText(machine.domain, name);
  });
}

NET_API_STATUS NetGetDCName(LPCWSTR, LPCWSTR domain, BYTE** name) {
  return platform::Answer(name, [=](const Machine& machine) {
    const bool isOwn = *domain == L'\0' || platform::SameName(domain, machine.domain);
    if (!machine.joined || !isOwn || machine.controller.empty()) return NERR_DCNotFound;
    const bool isBare = !machine.controller.starts_with(LR"(\\)");
    return platform::HandOutText((isBare ? LR"(\\)" : L"") + machine.controller,
                                 reinterpret_cast<LPWSTR*>(name));
  });
}

NET_API_STATUS NetUserGetInfo(LPCWSTR server, LPCWSTR user, DWORD level, BYTE** record) {
  return platform::Answer(record, [=](const Machine& machine) {
    if (const auto fault = platform::TakeFault("NetUserGetInfo")) return *fault;
    const bool isHere = server == nullptr;
    if (!isHere && !platform::IsController(machine, server)) return ERROR_BAD_NETPATH;
    const auto account = isHere ? platform::FindLocal(machine, user)
                                : platform::FindDescribed(machine, server, user);
    if (!account) return NERR_UserNotFound;
    return level == 10
               ? platform::HandOut(account->fullName, &USER_INFO_10::usri10_full_name, record)
               : platform::HandOut(account->fullName, &USER_INFO_11::usri11_full_name, record);
  });
}

NET_API_STATUS NetApiBufferFree(LPVOID buffer) {
  std::free(buffer);
  return NERR_Success;
}

BOOL GetUserNameW(LPWSTR name, LPDWORD size) {
  NET_API_STATUS result = NERR_Success;
  try {
    result = platform::CopyUserName(platform::LoadMachine().user, name, *size);
  } catch (const std::system_error& error) {
    result = platform::ErrorOf(error.code().value());
  }
  return result == NERR_Success ? TRUE : platform::FailWith(result);
}
