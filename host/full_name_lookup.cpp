#include "host/full_name_lookup.h"

#include <cwchar>
#include <iterator>

#include "logging/log.h"
#include "platform/netapi.h"
#include "platform/owner.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kLookUp[] = L"SigilSettingManagement::GetUserFullName";
constexpr wchar_t kFailedText[] = L"ユーザ名称取得失敗　エラーステータス[%d]";

constexpr LogMessage kUserName = {2, 153100700, kLookUp, L"取得したユーザ名：【%s】"};
constexpr LogMessage kController = {2, 153100710, kLookUp, L"ドメインコントローラー：【%s】"};
constexpr LogMessage kFailedUnasked = {4, 153100350, kLookUp, kFailedText};
constexpr LogMessage kFailedNameless = {4, 153100360, kLookUp, kFailedText};
constexpr LogMessage kFailedController = {4, 153100370, kLookUp, kFailedText};
constexpr LogMessage kEmptyName = {4, 153100720, kLookUp, L"ユーザ名称取得失敗　処理結果=%d"};
constexpr LogMessage kFound = {3, 153100390, kLookUp, L"ユーザ名称取得成功【%s】"};
constexpr LogMessage kThrown = {4, 153100380, kLookUp, L"ユーザ名称取得失敗！"};

constexpr std::size_t kNameCapacity = 256;

constexpr auto kFreeBuffer = [](void* buffer) { NetApiBufferFree(buffer); };

/// A block from a network call.
template <typename Type>
using CNetBuffer = Owner<Type*, kFreeBuffer>;

template <typename Type>
LPBYTE* OutBytes(CNetBuffer<Type>& buffer) {
  return reinterpret_cast<LPBYTE*>(buffer.Out());
}

bool LookUpLocally(const wchar_t* userName, const LogMessage& failed, CString& fullName) {
  CNetBuffer<USER_INFO_10> user;
  const NET_API_STATUS status = NetUserGetInfo(nullptr, userName, 10, OutBytes(user));
  if (status != 0 || !user) {
    Log(failed, static_cast<int>(status));
    return false;
  }
  fullName = user->usri10_full_name;
  return true;
}

bool LookUp(CString& fullName, CString& domainController) {
  wchar_t domain[kNameCapacity] = {};
  CNetBuffer<WKSTA_INFO_100> workstation;
  if (NetWkstaGetInfo(nullptr, 100, OutBytes(workstation)) == 0 && workstation &&
      workstation->wki100_langroup != nullptr)
    std::wcsncpy(domain, workstation->wki100_langroup, kNameCapacity - 1);

  CNetBuffer<wchar_t> joinedName;
  auto status = NetSetupUnknownStatus;
  NET_API_STATUS result = NetGetJoinInformation(nullptr, joinedName.Out(), &status);
  const bool joined = result == 0 && status == NetSetupDomainName;

  wchar_t userName[kNameCapacity] = {};
  DWORD capacity = kNameCapacity;
  if (!GetUserNameW(userName, &capacity)) userName[0] = L'\0';
  Log(kUserName, userName);

  CNetBuffer<wchar_t> controller;
  if (joined) result = NetGetDCName(nullptr, domain, OutBytes(controller));
  if (!joined || result != 0) return LookUpLocally(userName, kFailedUnasked, fullName);

  Log(kController, controller.Get());
  CNetBuffer<USER_INFO_11> user;
  if (NetUserGetInfo(controller.Get(), userName, 11, OutBytes(user)) != 0 || !user)
    return LookUpLocally(userName, kFailedController, fullName);
  if (user->usri11_full_name == nullptr) return LookUpLocally(userName, kFailedNameless, fullName);
  fullName = user->usri11_full_name;
  domainController = controller.Get();
  return true;
}

}  // namespace

bool GetUserFullName(CString& fullName, CString& domainController) {
  fullName.Empty();
  domainController.Empty();
  try {
    const bool found = LookUp(fullName, domainController);
    if (fullName.IsEmpty()) {
      Log(kEmptyName, found);
    } else if (found) {
      Log(kFound, fullName);
    }
    return found;
  } catch (...) {
    Log(kThrown);
    return false;
  }
}

}  // namespace SigilSettingManagement
