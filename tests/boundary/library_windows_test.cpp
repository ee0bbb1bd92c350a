// The library as Windows hosts meet it: loading, the export table, and what it hands to Windows.

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "boundary/exports.h"
#include "tests/recorder/recorder.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

/// Where the client's files lie. (Below the user's folder Wine links to the whole of his home.)
std::vector<fs::path> Files() {
  std::vector<fs::path> files;
  for (const wchar_t* folder : {L"C:\\ProgramData", kSettingFolder})
    for (const auto& entry : fs::recursive_directory_iterator(folder))
      files.push_back(entry.path());
  return files;
}

TEST(Library, LoadingAndUnloadingTouchesNoFileAndLogsNothing) {
  TestMachine machine;
  RecorderReset();
  const fs::path copy = fs::path(kSettingFolder) / L"Copy.dll";  // This process has the original.
  fs::copy_file(L"SigilSetting.dll", copy);
  const auto before = Files();
  for (int i = 0; i < 2; ++i) {
    const HMODULE library = LoadLibraryW(copy.c_str());
    ASSERT_NE(library, nullptr) << GetLastError();
    const char* const exports[] = {
        "SigilSettingReleaseWaterMark",       "SigilSettingSetWaterMark",
        "SigilSettingUpdateWaterMarkSetting", "SigilSettingReleaseWaterMarkForService",
        "SigilSettingSetUseContentLog",       "SigilSettingUpdateExcludePrinter"};
    for (WORD ordinal = 1; ordinal <= 6; ++ordinal)
      EXPECT_EQ(GetProcAddress(library, MAKEINTRESOURCEA(ordinal)),
                GetProcAddress(library, exports[ordinal - 1]))
          << ordinal;
    EXPECT_EQ(GetProcAddress(library, MAKEINTRESOURCEA(7)), nullptr);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleW(L"Copy.dll"), nullptr);
  }
  EXPECT_EQ(Files(), before);
  EXPECT_EQ(RecorderCount(), 0U);
}

/// In place of what the library has of another one, for the life of this.
class Replacement {
 public:
  Replacement(const char* name, void* function) : m_place(PlaceOf(name)) { Swap(function); }
  ~Replacement() { Swap(m_original); }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

 private:
  static void** PlaceOf(const char* name) {
    auto* const base = reinterpret_cast<char*>(GetModuleHandleW(L"SigilSetting.dll"));
    const auto at = [base](DWORD offset) { return reinterpret_cast<void*>(base + offset); };
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers =
        static_cast<const IMAGE_NT_HEADERS*>(at(static_cast<DWORD>(dos->e_lfanew)));
    const DWORD imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* library = static_cast<IMAGE_IMPORT_DESCRIPTOR*>(at(imports)); library->Name != 0;
         ++library) {
      auto* names = static_cast<IMAGE_THUNK_DATA*>(at(library->OriginalFirstThunk));
      auto* places = static_cast<void**>(at(library->FirstThunk));
      for (; names->u1.AddressOfData != 0; ++names, ++places) {
        const auto* const entry =
            static_cast<const IMAGE_IMPORT_BY_NAME*>(at(names->u1.AddressOfData));
        if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) == 0) return places;
      }
    }
    throw std::runtime_error(name);
  }

  void Swap(void* function) {
    DWORD before = 0;
    VirtualProtect(m_place, sizeof *m_place, PAGE_READWRITE, &before);
    m_original = std::exchange(*m_place, function);
    VirtualProtect(m_place, sizeof *m_place, before, &before);
  }

  void** m_place;
  void* m_original = nullptr;
};

std::vector<std::string> g_attributes;

void Note(const char* operation, const SECURITY_ATTRIBUTES* attributes) {
  BOOL present = FALSE, defaulted = TRUE;
  ACL* list = reinterpret_cast<ACL*>(-1);
  GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &list, &defaulted);
  const bool open = present && list == nullptr && !defaulted;
  g_attributes.push_back(std::string(operation) + " " + std::to_string(attributes->nLength) +
                         (attributes->bInheritHandle ? " inherited" : "") + (open ? " open" : ""));
}

HANDLE WINAPI NoteMutex(SECURITY_ATTRIBUTES* attributes, BOOL owned, LPCWSTR name) {
  Note("mutex", attributes);
  return CreateMutexW(attributes, owned, name);
}

HANDLE WINAPI NotePipe(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                       DWORD disposition, DWORD flags, HANDLE templateFile) {
  if (attributes != nullptr) Note("pipe", attributes);
  return CreateFileW(path, access, share, attributes, disposition, flags, templateFile);
}

/// A server of the pipe for one client: what each read of it gave, and how it ended.
class PipeServer {
 public:
  PipeServer()
      : m_pipe(CreateNamedPipeW(L"\\\\.\\pipe\\hlwatermark", PIPE_ACCESS_INBOUND,
                                PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 4096, 0, nullptr)),
        m_thread([this] { Serve(); }) {}
  ~PipeServer() { CloseHandle(m_pipe); }

  std::vector<std::string> Messages() {
    m_thread.join();
    return m_messages;
  }

 private:
  void Serve() {
    ConnectNamedPipe(m_pipe, nullptr);
    char bytes[64];
    DWORD size = 0;
    while (ReadFile(m_pipe, bytes, sizeof bytes, &size, nullptr))
      m_messages.emplace_back(bytes, size);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
  }

  HANDLE m_pipe;
  std::vector<std::string> m_messages;
  std::thread m_thread;
};

TEST(Library, TheServiceReceivesSixteenBytesAndTheSharedObjectsAreOpenToAll) {
  using namespace std::string_literals;
  TestMachine machine;
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("<QuietMIMOSA><HLE/></QuietMIMOSA>"));
  g_attributes.clear();
  const Replacement mutex("CreateMutexW", reinterpret_cast<void*>(NoteMutex));
  const Replacement pipe("CreateFileW", reinterpret_cast<void*>(NotePipe));
  const struct {
    int (*operation)();
    std::string message;
  } cases[] = {{SigilSettingReleaseWaterMark, "R\0e\0l\0e\0a\0s\0e\0\0\0"s},
               {SigilSettingSetWaterMark, "S\0e\0t\0t\0i\0n\0g\0\0\0"s}};
  for (const auto& [operation, message] : cases) {
    PipeServer server;
    EXPECT_EQ(operation(), 0);
    EXPECT_EQ(server.Messages(), std::vector{message});
  }
  const std::vector<std::string> both = {"mutex 12 inherited open", "pipe 12 inherited open"};
  EXPECT_EQ(g_attributes, (std::vector{both[0], both[1], both[0], both[1]}));
}

}  // namespace
}  // namespace tests
