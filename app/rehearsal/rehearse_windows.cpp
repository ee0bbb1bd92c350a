// The folder of a rehearsal with its copies and settings, and its process.

#include <cstdlib>

#include "app/machine/client.h"
#include "app/machine/home.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/pass/messages.h"
#include "app/rehearsal/rehearse.h"
#include "app/text/errors.h"
#include "app/text/file_windows.h"
#include "app/text/files.h"
#include "app/text/wording.h"
#include "component/names.h"
#include "host/shared_names.h"
#include "platform/shell.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kPrefix[] = L"sigilctl-rehearsal-";
constexpr wchar_t kProgram[] = L"sigilctl.exe";
constexpr wchar_t kStandIns[] = L"rehearsal\\";
constexpr wchar_t kCall[] = L"call.json";
constexpr wchar_t kAnswer[] = L"answer.json";

/// What the files of a rehearsal may have at most: its program, its call and its answer.
constexpr std::size_t kGreatest = 512 * 1024 * 1024;

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(WithError(what, GetLastError()));
}

/// The account's own folder for what is temporary, which is closed to others whatever TMP says.
fs::path ScratchPlace() {
  wchar_t folder[MAX_PATH];
  if (!SHGetSpecialFolderPathW(nullptr, folder, CSIDL_LOCAL_APPDATA, FALSE))
    Fail("the account has no folder for its application data");
  fs::path place = fs::path(folder) / L"Temp";
  fs::create_directories(place);
  return place;
}

/// Opens the folder so that nobody moves or removes it meanwhile. Null where another has it so.
File HoldFolder(const fs::path& folder, DWORD access) {
  return OpenFile(folder, access, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                  FILE_FLAG_BACKUP_SEMANTICS);
}

/// Removes a rehearsal's folder, or a file of one. Links stay, and with them the folders that they
/// are in, because a rehearsal makes none, and another process's link may lead anywhere.
void RemoveTree(const fs::path& path, int depth = 0) {
  constexpr int kGreatestDepth = 4;  // more than a rehearsal makes; whoever plants more keeps it
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || depth > kGreatestDepth) return;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    DeleteFileW(path.c_str());
    return;
  }
  std::error_code error;
  for (fs::directory_iterator each(path, error), end; each != end; each.increment(error))
    RemoveTree(each->path(), depth + 1);
  RemoveDirectoryW(path.c_str());
}

void RemoveLeftOvers(const fs::path& place) {
  std::error_code ignored;
  for (const fs::directory_entry& each : fs::directory_iterator(place, ignored))
    if (each.path().filename().wstring().starts_with(kPrefix) && HoldFolder(each.path(), DELETE))
      RemoveTree(each.path());
}

fs::path MakeFolder(File& hold) {
  const fs::path place = ScratchPlace();
  RemoveLeftOvers(place);
  constexpr int kTries = 8;
  for (int i = 0; i < kTries; ++i) {
    const fs::path folder = place / (kPrefix + std::to_wstring(GetCurrentProcessId()) + L"-" +
                                     std::to_wstring(GetTickCount()) + L"-" + std::to_wstring(i));
    if (!CreateDirectoryW(folder.c_str(), nullptr)) continue;
    hold = HoldFolder(folder, GENERIC_READ);
    if (hold) return folder;
  }
  Fail(place.string() + ": no folder can be made there");
}

/// Returns false when there is no such file.
bool Copy(const std::wstring& file, const fs::path& copy, std::size_t greatest = kGreatest) {
  const auto bytes = ReadInput(file, greatest);
  if (bytes) WriteOutput(copy, *bytes);
  return bytes.has_value();
}

/// A process that ends with this object, and with the process that has made it.
class Child {
 public:
  explicit Child(const fs::path& folder) : m_job(CreateJobObjectW(nullptr, nullptr)) {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limit = {};
    limit.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(m_job.Get(), JobObjectExtendedLimitInformation, &limit, sizeof limit);
    const fs::path program = folder / kProgram;
    std::wstring line = L"\"" + program.wstring() + L"\" " + platform::FromUtf8(kRehearse);
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION made = {};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE,
                        CREATE_NO_WINDOW | CREATE_SUSPENDED, nullptr, folder.c_str(), &start,
                        &made))
      Fail("the rehearsal's process cannot be started");
    m_process = File(made.hProcess);
    const File thread(made.hThread);
    // Fails where this process is in a job that allows no other: then the child outlives a parent
    // that is killed, to its own end.
    AssignProcessToJobObject(m_job.Get(), made.hProcess);
    ResumeThread(thread.Get());
  }
  ~Child() {
    TerminateProcess(m_process.Get(), 1);
    WaitForSingleObject(m_process.Get(), INFINITE);  // its files cannot be removed before
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Await() {
    constexpr DWORD kTickMilliseconds = 200;
    Progress progress;
    while (WaitForSingleObject(m_process.Get(), kTickMilliseconds) == WAIT_TIMEOUT) progress.Tick();
    DWORD code = 0;
    if (!GetExitCodeProcess(m_process.Get(), &code) || code != 0)
      throw std::runtime_error("the rehearsal was ended (exit code " + std::to_string(code) + ")");
  }

 private:
  const File m_job;
  File m_process;
};

}  // namespace

struct ScratchMachine::Hold {
  File folder;
};

ScratchMachine::ScratchMachine()
    : m_hold(std::make_unique<Hold>()), m_folder(MakeFolder(m_hold->folder)) {}

ScratchMachine::ScratchMachine(fs::path folder) : m_folder(std::move(folder)) {}

ScratchMachine::~ScratchMachine() {
  if (!m_hold) return;
  m_hold->folder.Reset();
  Remove();
}

void ScratchMachine::Remove() const {
  RemoveTree(m_folder);
}

std::string ScratchMachine::Ask(const PolicyCall& call) const {
  const fs::path settings = m_folder / L"settings";
  fs::create_directory(settings);
  // The user file as it is, so that the user's name is looked up as by the update itself.
  if (const auto folder = SettingFolder())
    Copy(*folder + kUserInformationName, settings.wstring() + kUserInformationName,
         kGreatestRowFile);
  const std::wstring names[] = {kProgram, kLibrary, kStandIns + std::wstring(kLog),
                                kStandIns + std::wstring(kComponentFile)};
  for (const std::wstring& name : names) {
    const std::wstring file = BesideHost(name);
    if (!Copy(file, m_folder / fs::path(file).filename()))
      throw std::runtime_error(platform::ToUtf8(file) + ": no such file");
  }
  const Json json = {{"text", platform::ToUtf8(call.text)},
                     {"policyId", call.policyId},
                     {"resetName", call.resetName}};
  WriteOutput(m_folder / kCall, json.dump());
  Child(m_folder).Await();
  return ReadInput(m_folder / kAnswer, kGreatest).value_or("");
}

void ScratchMachine::Enter() const {
  SetEnvironmentVariableW(L"SIGIL_LOG_LEVEL", L"9");  // the messages are watched
}

/// The place of the delivered policy is the machine's, so set itself cannot be asked. Asked are the
/// parts of it that decide on a text: the cipher, the reader and the scope.
std::string ScratchMachine::WhyUndelivered(const std::wstring& text) const {
  std::optional<Unsealed> delivered;
  if (PolicyKey key; FindKey(key)) {
    const fs::path file = m_folder / L"WmPolicy.dat";
    WriteOutput(file, SealText(platform::ToUtf8(text)));
    delivered = Unseal(file.wstring());
  }
  const PolicyText policy = delivered ? std::move(delivered->policy) : ReadPolicy(text);
  if (!policy.refusal.empty()) return policy.refusal;
  constexpr int kNone = -1;
  return _wtoi(policy.scope.value_or(L"").c_str()) == kNone ? MeaningOfNoScope() : "";
}

int RunRehearsal() {
  const fs::path folder = fs::path(BesideHost(kProgram)).parent_path();
  const Json json = Json::parse(ReadInput(folder / kCall, kGreatest).value_or(""));
  const std::wstring text = platform::FromUtf8(json.at("text").get<std::string>());
  WriteOutput(folder / kAnswer,
              AnswerOf(ScratchMachine(folder), {text, json.at("policyId"), json.at("resetName")}));
  return 0;
}

peers::SettingFileContent ReadSettingsOfCopy() {
  return ReadSettings();
}

}  // namespace app
