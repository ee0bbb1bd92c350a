#include "platform/posix/machine/machine.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <system_error>

#include "platform/owner.h"
#include "platform/posix/machine/ini_file.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/password_database.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr std::wstring_view kSeparators = L"\\/";
constexpr std::wstring_view kOwn = L"Machine";
constexpr std::wstring_view kPrinterPrefix = L"Printer ";
constexpr std::wstring_view kAccounts = L"Accounts";

// The known names, for UnreadLine::readHere.
constexpr std::wstring_view kSections[] = {kOwn, kAccounts, L"Printer"};
constexpr std::wstring_view kOwnKeys[] = {L"User", L"Domain", L"Joined", L"Controller"};
constexpr std::wstring_view kPrinterKeys[] = {L"Driver", L"Comment"};
constexpr std::span<const std::wstring_view> kNothing;

constexpr auto kCloseFolder = [](DIR* folder) { closedir(folder); };
using Folder = Owner<DIR*, kCloseFolder>;

/// Returns an empty path when the variable is not set.
fs::path Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? fs::path() : fs::path(value);
}

bool HasDrive(std::wstring_view path) {
  return path.size() >= 2 && path[1] == L':' &&
         ((path[0] >= L'A' && path[0] <= L'Z') || (path[0] >= L'a' && path[0] <= L'z'));
}

std::wstring LoginName() {
  const auto user = FindUser(geteuid());
  return user ? user->login : std::to_wstring(geteuid());
}

bool IsPrinter(const IniFile::Section& section) {
  return StartsWithName(section.name, kPrinterPrefix);
}

/// A section's header without its closing bracket, which reads as an entry.
bool IsCutHeader(const IniFile::Line& line) {
  return line.isEntry && line.key.starts_with(L'[');
}

bool IsAccounts(const IniFile::Section& section) {
  return SameName(section.name, kAccounts) ||
         StartsWithName(section.name, std::wstring(kAccounts) + L' ');
}

std::wstring_view WithoutBackslashes(std::wstring_view server) {
  return server.substr(server.starts_with(LR"(\\)") ? 2 : 0);
}

/// Builds a machine from a file and remembers the lines that had an effect.
class Reader {
 public:
  explicit Reader(const IniFile& file) : m_file(file) {}

  Machine Read() {
    const IniFile::Section* own = m_file.Find(kOwn);
    if (own != nullptr) m_read.insert(own->header.number);
    Machine machine;
    machine.user = ValueOf(own, L"User", LoginName());
    machine.domain = ValueOf(own, L"Domain", L"WORKGROUP");
    machine.joined = ValueOf(own, L"Joined", L"0") == L"1";
    machine.controller = ValueOf(own, L"Controller", L"");
    for (const IniFile::Section& section : m_file.Sections()) {
      if (IsPrinter(section)) {
        if (!m_printers.insert(Folded(section.name)).second) continue;
        machine.printers.push_back(PrinterOf(section));
      } else if (IsAccounts(section)) {
        machine.accountLists.push_back(AccountsOf(section));
      } else {
        continue;
      }
      m_read.insert(section.header.number);
    }
    return machine;
  }

  /// Returns the lines without effect, by line number.
  std::vector<UnreadLine> Unread() const {
    std::vector<UnreadLine> unread;
    for (const IniFile::Line& line : m_file.Head()) {
      if (!m_file.IsText(line))
        unread.push_back({line.number, line.key, Reason::kNoText});
      else if (line.isEntry)
        unread.push_back(
            {line.number, line.key, Reason::kUnread, IsCutHeader(line) ? kSections : kNothing});
    }
    for (const IniFile::Section& section : m_file.Sections()) AddUnread(section, unread);
    return unread;
  }

 private:
  using Reason = UnreadLine::Reason;

  const std::optional<std::wstring>& Use(const IniFile::Line& line) {
    if (line.value) m_read.insert(line.number);
    return line.value;
  }

  /// Returns `fallback` for a missing value and for an empty one.
  std::wstring ValueOf(const IniFile::Section* section, std::wstring_view key,
                       std::wstring_view fallback) {
    const IniFile::Line* line = section == nullptr ? nullptr : section->Find(key);
    if (line == nullptr) return std::wstring(fallback);
    const std::optional<std::wstring>& value = Use(*line);
    return value && !value->empty() ? *value : std::wstring(fallback);
  }

  Printer PrinterOf(const IniFile::Section& section) {
    Printer printer;
    printer.name = Trim(std::wstring_view(section.name).substr(kPrinterPrefix.size()));
    printer.driver = ValueOf(&section, L"Driver", L"");
    if (const IniFile::Line* comment = section.Find(L"Comment")) printer.comment = Use(*comment);
    return printer;
  }

  /// Of two accounts with one login on a server the first counts.
  AccountList AccountsOf(const IniFile::Section& section) {
    AccountList list;
    list.server = Trim(std::wstring_view(section.name).substr(kAccounts.size()));
    const std::wstring server = Folded(WithoutBackslashes(list.server)) + L'\n';
    for (const IniFile::Line& line : section.lines) {
      if (!line.isEntry || IsCutHeader(line) ||
          !m_accounts.insert(server + Folded(line.key)).second)
        continue;
      list.accounts.push_back({line.key, line.value});
      m_read.insert(line.number);
    }
    return list;
  }

  void AddUnread(const IniFile::Section& section, std::vector<UnreadLine>& unread) const {
    const bool isRead = m_read.contains(section.header.number);
    const std::wstring name = L"[" + section.name + L"]";
    if (!m_file.IsText(section.header))
      unread.push_back({section.header.number, name, Reason::kNoText});
    else if (!isRead && (SameName(section.name, kOwn) || IsPrinter(section)))
      unread.push_back({section.header.number, name, Reason::kSecond});
    else if (!isRead)
      unread.push_back({section.header.number, name, Reason::kUnread, kSections});
    std::set<std::wstring> keys;
    for (const IniFile::Line& line : section.lines) {
      const bool isFirst = line.isEntry && keys.insert(Folded(line.key)).second;
      if (!m_file.IsText(line))
        unread.push_back({line.number, line.key, Reason::kNoText});
      else if (IsCutHeader(line))
        unread.push_back({line.number, line.key, Reason::kUnread, kSections});
      else if (isRead && line.isEntry && !m_read.contains(line.number))
        unread.push_back({line.number, line.key,
                          isFirst && !IsAccounts(section) ? Reason::kUnread : Reason::kSecond,
                          KeysOf(section)});
    }
  }

  static std::span<const std::wstring_view> KeysOf(const IniFile::Section& section) {
    if (SameName(section.name, kOwn)) return kOwnKeys;
    return kPrinterKeys;
  }

  const IniFile& m_file;
  std::set<std::size_t> m_read;       ///< Numbers of lines.
  std::set<std::wstring> m_printers;  ///< Names of sections.
  std::set<std::wstring> m_accounts;  ///< Server and login.
};

}  // namespace

fs::path MachineRoot() {
  fs::path root = Variable("SIGIL_ROOT");
  if (root.empty()) {
    const fs::path data = Variable("XDG_DATA_HOME");
    root = (data.empty() ? Variable("HOME") / ".local" / "share" : data) / "sigil" / "machine";
  }
  root = fs::absolute(root);
  return root.has_filename() ? root : root.parent_path();
}

namespace {

/// Returns null when there is no such name.
std::optional<fs::path> FindExisting(const fs::path& folder, std::wstring_view name) {
  fs::path exact = folder / ToUtf8(name);
  std::error_code error;
  if (fs::exists(fs::symlink_status(exact, error))) return exact;
  std::string best;
  // The iterator of <filesystem> would end the process when memory ends.
  const Folder opened(opendir(folder.c_str()));
  while (const dirent* const found = opened ? readdir(opened.Get()) : nullptr)
    if (SameName(FromUtf8(found->d_name), name) && (best.empty() || found->d_name < best))
      best = found->d_name;
  if (best.empty()) return std::nullopt;
  return folder / best;
}

}  // namespace

fs::path FindName(const fs::path& folder, std::wstring_view name) {
  return FindExisting(folder, name).value_or(folder / ToUtf8(name));
}

fs::path HostPath(std::wstring_view windowsPath) {
  std::wstring_view rest = windowsPath.substr(0, windowsPath.find(L'\0'));
  if (rest.empty() || rest.starts_with(L'/')) {
    // Callers append file names with a backslash, as on Windows.
    std::string path = ToUtf8(rest);
    std::ranges::replace(path, '\\', '/');
    return path;
  }
  std::string drive = "C";
  if (HasDrive(rest)) {
    drive[0] = static_cast<char>(rest[0] & ~0x20);
    rest.remove_prefix(2);
  }
  std::vector<std::wstring_view> pieces;
  while (!rest.empty()) {
    const std::wstring_view piece = rest.substr(0, rest.find_first_of(kSeparators));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    if (piece == L".." && !pieces.empty()) pieces.pop_back();
    if (!piece.empty() && piece != L"." && piece != L"..") pieces.push_back(piece);
  }
  fs::path path = MachineRoot() / drive;
  // A string, because most paths exist as written, and fs::path objects are slow to build.
  std::string exact = path;
  for (const std::wstring_view piece : pieces) exact += "/" + ToUtf8(piece);
  struct stat status = {};
  if (lstat(exact.c_str(), &status) == 0) return exact;
  auto found = std::optional(path);
  for (const std::wstring_view piece : pieces) {
    if (found) found = FindExisting(path, piece);  // below a missing folder nothing is looked for
    path = found ? *found : path / ToUtf8(piece);
  }
  return path;
}

Machine LoadMachine(std::vector<UnreadLine>* unread) {
  const auto bytes = ReadWholeFile(MachineRoot() / "machine.ini");
  const IniFile file(bytes.value_or(""), IniFile::Encoding::kUtf8);
  Reader reader(file);
  Machine machine = reader.Read();
  if (unread != nullptr) *unread = reader.Unread();
  return machine;
}

bool SameServer(std::wstring_view left, std::wstring_view right) {
  return SameName(WithoutBackslashes(left), WithoutBackslashes(right));
}

}  // namespace platform
