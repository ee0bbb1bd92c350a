// The Settings component of the tests: it records each call, answers as the test has scripted, and
// holds nothing but what the recorder's state tells:
//
//   "setting folder"      what GetSettingFileDir gives
//   "printer settings"    names, one a line; also "driver settings"
//   "excludes"            a number of entries; also "second excludes"
//   "watermarks NAME"     a number of watermarks in the record of that name
//
// A GUID is recorded as its letter and number: E and S for exclude entries, A for an added one, O
// for the watermarks a record holds, W for new ones. State never changes by itself.
//
// Scripted results: a negative one hands out no object, any other does, also where the interface
// takes only 0 for success. A scripted throw leaves the component as an exception, which works
// only where modules share their C++ library.

#include <algorithm>
#include <charconv>
#include <cstring>
#include <cwchar>
#include <stdexcept>
#include <string>
#include <vector>

#include "component/sigil_interfaces.h"
#include "tests/recorder/recorder.h"

namespace {

constexpr BYTE kGuidTail[8] = {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18};

GUID MakeGuid(wchar_t letter, unsigned number) {
  GUID guid{number, static_cast<WORD>(letter), 0x4000, {}};
  std::memcpy(guid.Data4, kGuidTail, sizeof kGuidTail);
  return guid;
}

std::wstring Show(const wchar_t* text) {
  return text == nullptr ? L"null" : L"\"" + std::wstring(text) + L"\"";
}

std::wstring Show(const std::wstring& plain) {
  return plain;
}

std::wstring Show(std::int32_t number) {
  return std::to_wstring(number);
}

std::wstring Show(double number) {
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
  std::wstring text(digits, end);
  if (text.find_first_of(L".en") == std::wstring::npos) text += L".0";
  return text;
}

std::wstring Show(const GUID* guid) {
  if (guid == nullptr) return L"null";
  const bool ours = guid->Data3 == 0x4000 && std::memcmp(guid->Data4, kGuidTail, 8) == 0;
  return ours ? wchar_t(guid->Data2) + std::to_wstring(guid->Data1) : L"a GUID of nobody";
}

// Where a call wants something back, only the presence of the place matters.
std::wstring Place(const wchar_t* name, const void* address) {
  return address == nullptr ? L"null" : name;
}

template <class... Args>
std::wstring ShowAll(const Args&... args) {
  std::wstring text;
  ((text += text.empty() ? Show(args) : L", " + Show(args)), ...);
  return text;
}

std::int32_t Ask(const std::wstring& operation, const std::wstring& line, std::int32_t usual = 0) {
  std::int32_t result = 0;
  switch (RecorderCall(operation.c_str(), line.c_str(), &result)) {
    case kRecorderResult:
      return result;
    case kRecorderThrow:
      throw std::runtime_error("scripted");
    default:
      return usual;
  }
}

std::int32_t StateNumber(const std::wstring& name) {
  return static_cast<std::int32_t>(std::wcstol(RecorderState(name.c_str()), nullptr, 10));
}

std::vector<std::wstring> StateLines(const wchar_t* name) {
  std::vector<std::wstring> lines;
  std::wstring rest = RecorderState(name);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(L'\n'), rest.size());
    lines.push_back(rest.substr(0, end));
    rest.erase(0, end + 1);
  }
  return lines;
}

/// Hands a text out as the component does: too small a buffer is left alone.
std::int32_t GiveText(const std::wstring& text, wchar_t* buffer, std::uint32_t* length) {
  const auto needed = static_cast<std::uint32_t>(text.size() + 1);
  const std::uint32_t capacity = *length;
  *length = needed;
  if (buffer == nullptr) return Sigil::kSuccess;
  if (capacity < needed) return Sigil::kTargetTooSmall;
  std::wmemcpy(buffer, text.c_str(), needed);
  return Sigil::kSuccess;
}

template <class Interface>
class Recorded : public Interface {
 public:
  explicit Recorded(const wchar_t* kind, const std::wstring& name = {})
      : m_kind(kind), m_shown(name.empty() ? m_kind : m_kind + L"[" + name + L"]") {
    RecorderChangeLive(kind, 1);
  }
  virtual ~Recorded() { RecorderChangeLive(m_kind.c_str(), -1); }
  Recorded(const Recorded&) = delete;
  Recorded& operator=(const Recorded&) = delete;

  std::uint32_t AddRef() override {
    RecorderAdd((m_shown + L"::AddRef()").c_str());
    return ++m_references;
  }

  std::uint32_t Release() override {
    const std::uint32_t left = --m_references;
    std::wstring line = m_shown + L"::Release()";
    if (left != 0) line += L" leaves " + std::to_wstring(left);
    RecorderAdd(line.c_str());
    if (left == 0) delete this;
    return left;
  }

 protected:
  template <class... Args>
  std::int32_t Call(const wchar_t* operation, const Args&... args) {
    return Usual(0, operation, args...);
  }

  /// A call that gives `usual` when the script says nothing.
  template <class... Args>
  std::int32_t Usual(std::int32_t usual, const wchar_t* operation, const Args&... args) {
    return Ask(m_kind + L"::" + operation,
               m_shown + L"::" + operation + L"(" + ShowAll(args...) + L")", usual);
  }

 private:
  std::wstring m_kind;
  std::wstring m_shown;
  std::uint32_t m_references = 1;
};

using Result = std::int32_t;
using Flag = std::int32_t;
using Text = const wchar_t*;

class TestWatermark : public Recorded<Sigil::Watermark> {
 public:
  explicit TestWatermark(unsigned number)
      : Recorded(L"Watermark", L"W" + std::to_wstring(number)), m_guid(MakeGuid(L'W', number)) {}

  Result GetId(GUID* guid) override {
    const Result result = Call(L"GetId", Place(L"guid", guid));
    if (!Sigil::Failed(result)) *guid = m_guid;
    return result;
  }
  Result SetName(Text text) override { return Call(L"SetName", text); }
  Result SetText(Text text) override { return Call(L"SetText", text); }
  Result SetFontName(Text text) override { return Call(L"SetFontName", text); }
  Result SetFontSize(double size) override { return Call(L"SetFontSize", size); }
  Result SetBold(Flag flag) override { return Call(L"SetBold", flag); }
  Result SetItalic(Flag flag) override { return Call(L"SetItalic", flag); }
  Result SetUnderLine(Flag flag) override { return Call(L"SetUnderLine", flag); }
  Result SetFit(Flag flag) override { return Call(L"SetFit", flag); }
  Result SetRepeatFirstAxis(Flag flag) override { return Call(L"SetRepeatFirstAxis", flag); }
  Result SetRepeatSecondAxis(Flag flag) override { return Call(L"SetRepeatSecondAxis", flag); }
  Result SetColor(std::int32_t color) override { return Call(L"SetColor", color); }
  Result SetXOffset(double offset) override { return Call(L"SetXOffset", offset); }
  Result SetYOffset(double offset) override { return Call(L"SetYOffset", offset); }
  Result SetRotate(std::int32_t degrees) override { return Call(L"SetRotate", degrees); }
  Result SetPrintPos(std::int32_t position) override { return Call(L"SetPrintPos", position); }
  Result SetOpacity(std::int32_t percent) override { return Call(L"SetOpacity", percent); }
  Result SetPositionOption(Flag option) override { return Call(L"SetPositionOption", option); }
  Result SetRepeatVSpace(std::int32_t space) override { return Call(L"SetRepeatVSpace", space); }
  Result SetRepeatHSpace(std::int32_t space) override { return Call(L"SetRepeatHSpace", space); }

 private:
  GUID m_guid;
};

/// Serves as last setting and, under the kind "CustomSetting", as custom setting.
class TestLastSetting : public Recorded<Sigil::LastSetting> {
 public:
  using Recorded::Recorded;

  Result SetName(Text text) override { return Call(L"SetName", text); }
  Result SetEnable(Flag flag) override { return Call(L"SetEnable", flag); }
  Result SetWatermarks(const GUID* first, std::uint32_t count) override {
    std::wstring list;
    for (std::uint32_t i = 0; i < count; ++i) list += (i == 0 ? L"" : L" ") + Show(first + i);
    return Call(L"SetWatermarks", list, std::to_wstring(count));
  }
};

class TestPrinterSettings : public Recorded<Sigil::PrinterSettings> {
 public:
  explicit TestPrinterSettings(const wchar_t* name)
      : Recorded(L"PrinterSettings", name), m_name(name) {}

  Result Save(std::int32_t mode) override { return Call(L"Save", mode); }
  Result Commit() override { return Call(L"Commit"); }
  Result GetLastSetting(Sigil::LastSetting** out) override {
    return Give(L"LastSetting", out, Call(L"GetLastSetting", Place(L"out", out)));
  }
  Result GetCustomSetting(Text name, Sigil::LastSetting** out) override {
    return Give(L"CustomSetting", out, Call(L"GetCustomSetting", name, Place(L"out", out)));
  }
  Result CreateCustomSetting(Sigil::LastSetting** out) override {
    return Give(L"CustomSetting", out, Call(L"CreateCustomSetting", Place(L"out", out)));
  }
  Result GetWatermarkInfo(std::int32_t index, GUID* guid, wchar_t* buffer,
                          std::uint32_t capacity) override {
    const Result result = Call(L"GetWatermarkInfo", index, Place(L"guid", guid),
                               Place(L"buffer", buffer), std::to_wstring(capacity));
    if (Sigil::Failed(result)) return result;
    *guid = MakeGuid(L'O', static_cast<unsigned>(index) + 1);
    std::wmemset(buffer, L'透', capacity);  // the whole capacity, so that a short buffer shows
    buffer[capacity] = L'\0';
    return result;
  }
  Result GetWatermarkCount() override {
    return Usual(StateNumber(L"watermarks " + m_name), L"GetWatermarkCount");
  }
  Result DeleteWatermark(const GUID* guid) override { return Call(L"DeleteWatermark", guid); }
  Result CreateWatermark(Sigil::Watermark** out) override {
    const unsigned number = RecorderNextNumber(L"Watermark");  // spent on a failure too
    const Result result = Call(L"CreateWatermark", Place(L"out", out));
    if (!Sigil::Failed(result)) *out = new TestWatermark(number);
    return result;
  }

 private:
  Result Give(const wchar_t* kind, Sigil::LastSetting** out, Result result) {
    if (!Sigil::Failed(result)) *out = new TestLastSetting(kind, m_name);
    return result;
  }

  std::wstring m_name;
};

class TestSettings : public Recorded<Sigil::Settings> {
 public:
  TestSettings() : Recorded(L"Settings") {}

  Result Save(std::int32_t mode) override { return Call(L"Save", mode); }
  Result Commit() override { return Call(L"Commit"); }
  Result GetSettingFileDir(wchar_t* buffer, std::uint32_t* length) override {
    const Result result =
        Call(L"GetSettingFileDir", Place(L"buffer", buffer), std::to_wstring(*length));
    return result != 0 ? result : GiveText(RecorderState(L"setting folder"), buffer, length);
  }
  Result GetPrinterSettingCount() override {
    return CountOf(L"printer settings", L"GetPrinterSettingCount");
  }
  Result GetPrinterSettingName(std::int32_t index, wchar_t* buffer,
                               std::uint32_t* length) override {
    return NameOf(L"printer settings", L"GetPrinterSettingName", index, buffer, length);
  }
  Result GetDriverSettingCount() override {
    return CountOf(L"driver settings", L"GetDriverSettingCount");
  }
  Result GetDriverSettingName(std::int32_t index, wchar_t* buffer, std::uint32_t* length) override {
    return NameOf(L"driver settings", L"GetDriverSettingName", index, buffer, length);
  }
  Result GetPrinterSettings(Text name, Sigil::PrinterSettings** out) override {
    const Result result = Call(L"GetPrinterSettings", name);
    if (!Sigil::Failed(result)) *out = new TestPrinterSettings(name);
    return result;
  }
  Result DeletePrinterSetting(Text path, Text text) override {
    return Call(L"DeletePrinterSetting", path, text);
  }
  Result DeleteDriverSetting(Text path, Text text) override {
    return Call(L"DeleteDriverSetting", path, text);
  }
  Result GetExcludePrinterCount() override {
    return Usual(StateNumber(L"excludes"), L"GetExcludePrinterCount");
  }
  Result GetExcludePrinter(std::int32_t index, GUID* guid, wchar_t* buffer,
                           std::uint32_t* length) override {
    return EntryOf(L'E', L"GetExcludePrinter", index, guid, buffer, length);
  }
  Result AddExcludePrinter(Text name, GUID* guid) override {
    const Result result = Call(L"AddExcludePrinter", name, Place(L"guid", guid));
    if (result == 0) *guid = MakeGuid(L'A', RecorderNextNumber(L"A"));
    return result;
  }
  Result DeleteExcludePrinter(const GUID* guid) override {
    return Call(L"DeleteExcludePrinter", guid);
  }
  Result GetSecondExcludeCount() override {
    return Usual(StateNumber(L"second excludes"), L"GetSecondExcludeCount");
  }
  Result GetSecondExclude(std::int32_t index, GUID* guid, wchar_t* buffer,
                          std::uint32_t* length) override {
    return EntryOf(L'S', L"GetSecondExclude", index, guid, buffer, length);
  }
  Result DeleteSecondExclude(const GUID* guid) override {
    return Call(L"DeleteSecondExclude", guid);
  }
  Result Lock() override { return Call(L"Lock"); }
  Result UnLock() override { return Call(L"UnLock"); }
  Result SetUseContentLog(BYTE flag) override {
    return Call(L"SetUseContentLog", static_cast<std::int32_t>(flag));
  }

 private:
  Result CountOf(const wchar_t* state, const wchar_t* operation) {
    return Usual(static_cast<Result>(StateLines(state).size()), operation);
  }
  Result NameOf(const wchar_t* state, const wchar_t* operation, std::int32_t index, wchar_t* buffer,
                std::uint32_t* length) {
    const Result result =
        Call(operation, index, Place(L"buffer", buffer), std::to_wstring(*length));
    if (Sigil::Failed(result)) return result;
    const Result given =
        GiveText(StateLines(state).at(static_cast<std::size_t>(index)), buffer, length);
    return Sigil::Failed(given) ? given : result;
  }
  Result EntryOf(wchar_t letter, const wchar_t* operation, std::int32_t index, GUID* guid,
                 wchar_t* buffer, std::uint32_t* length) {
    const Result result = Call(operation, index, Place(L"guid", guid), Place(L"buffer", buffer),
                               Place(L"length", length));
    if (result == 0) *guid = MakeGuid(letter, static_cast<unsigned>(index) + 1);
    return result;
  }
};

/// Its display text differs from its text, so that one used for the other shows.
class TestString : public Recorded<Sigil::String> {
 public:
  TestString() : Recorded(L"String", std::to_wstring(RecorderNextNumber(L"String"))) {}

  Text GetDisplayText() override {
    Call(L"GetDisplayText");
    return m_displayText.c_str();
  }
  Result SetKind(std::int32_t kind) override {
    m_kind = kind;
    return Call(L"SetKind", kind);
  }
  Result GetKind() override { return Usual(m_kind, L"GetKind"); }
  Result SetText(Text text) override {
    m_text = text;
    m_displayText = L"<" + m_text + L">";
    return Call(L"SetText", text);
  }
  Text GetText() override {
    Call(L"GetText");
    return m_text.c_str();
  }

 private:
  std::int32_t m_kind = -1;
  std::wstring m_text;
  std::wstring m_displayText;
};

/// Made and destroyed as the library comes and goes.
struct Library {
  Library() {
    RecorderChangeLive(L"Library", 1);
    RecorderAdd(L"component loaded");
  }
  ~Library() {
    RecorderChangeLive(L"Library", -1);
    RecorderAdd(L"component unloaded");
  }
} theLibrary;

bool Same(const GUID* left, const GUID& right) {
  return std::memcmp(left, &right, 16) == 0;
}

}  // namespace

extern "C" {

RECORDER_EXPORT std::int32_t SigilCreateInstance(const GUID* first, const GUID* second,
                                                 void** out) {
  const bool settings =
      Same(first, Sigil::kSettingsFirstIdentity) && Same(second, Sigil::kSettingsSecondIdentity);
  const bool text =
      Same(first, Sigil::kStringFirstIdentity) && Same(second, Sigil::kStringSecondIdentity);
  const std::wstring kind = settings ? L"Settings" : text ? L"String" : L"unknown";
  const std::int32_t result = Ask(L"SigilCreateInstance", L"SigilCreateInstance(" + kind + L")",
                                  settings || text ? Sigil::kSuccess : Sigil::kCannotCreate);
  if (Sigil::Failed(result)) return result;
  if (settings) *out = static_cast<Sigil::Settings*>(new TestSettings);
  if (text) *out = static_cast<Sigil::String*>(new TestString);
  return result;
}

RECORDER_EXPORT void SigilMergeUserStoreWatermarks() {
  RecorderAdd(L"merge, never to be called");
}

RECORDER_EXPORT void SigilGetVersionDate() {
  RecorderAdd(L"date, never to be called");
}
}
