// The Settings component of the tests: it records each call, answers as the test has scripted, and
// holds nothing but what the recorder's state tells:
//
//   "setting folder"      what GetSettingFileDir gives
//   "told length"         the length that it tells beside the text, where not the text's own
//   "printer settings"    names, one a line; also "driver settings"
//   "excludes"            a number of entries; also "second excludes"
//   "watermarks NAME"     a number of watermarks in the record of that name
//   "no GUIDs"            set: a watermark's GUID is never written, whatever the result
//
// A GUID is recorded as its letter and number: E and S for exclude entries, A for an added one, O
// for the watermarks a record holds, W for new ones. State never changes by itself.
//
// Scripted results: a negative one hands out no object, any other does, also where the interface
// takes only 0 for success. A scripted throw leaves the component as an exception of a class of its
// own, whose destructor is gone with the library; this works only where modules share their C++
// library. A Release that throws has released.
//
// Another compiler builds this file too (../foreign), and of the C++ library has only what is used
// here. What a run-time does in either case is behind run_time.h.

#include <charconv>
#include <concepts>
#include <cstring>
#include <cwchar>
#include <string>
#include <type_traits>

#include "component/sigil_interfaces.h"
#include "tests/recorder/recorder.h"
#include "tests/test_component/run_time.h"

namespace {

using Result = std::int32_t;
using Number = std::int32_t;
using Size = std::uint32_t;
using Text = const wchar_t*;

// Written here once more, so that a slip in the library's own shows.
constexpr GUID kSettings[] = {
    {0x939D0FE0, 0x3386, 0x466D, {0xA1, 0x45, 0xE3, 0x07, 0xA9, 0xAA, 0x5D, 0xC9}},
    {0x8CB443F7, 0xE498, 0x4A02, {0xA5, 0x0A, 0x66, 0x75, 0x47, 0x38, 0xD1, 0x24}}};
constexpr GUID kString[] = {
    {0x9195CE54, 0x518B, 0x48F8, {0x87, 0xC8, 0xBA, 0x2F, 0xFC, 0x92, 0xBC, 0x9E}},
    {0xFB2A1FC4, 0x6B0F, 0x4C8C, {0x89, 0x0B, 0x61, 0x0A, 0x9E, 0x43, 0x29, 0xC3}}};

constexpr BYTE kGuidTail[8] = {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18};

GUID MakeGuid(wchar_t letter, unsigned number) {
  GUID guid{number, static_cast<WORD>(letter), 0x4000, {}};
  std::memcpy(guid.Data4, kGuidTail, sizeof kGuidTail);
  return guid;
}

std::wstring Show(Text text) {
  return text == nullptr ? L"null" : L"\"" + std::wstring(text) + L"\"";
}

std::wstring Show(const std::wstring& plain) {
  return plain;
}

std::wstring Show(std::integral auto number) {
  return std::to_wstring(number);
}

std::wstring Show(double number) {
  char digits[32];
  char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  bool whole = true;
  for (const char* at = digits; at != end; ++at) whole &= *at == '-' || (*at >= '0' && *at <= '9');
  return std::wstring(digits, end) + (whole ? L".0" : L"");
}

std::wstring Show(const GUID* guid) {
  if (guid == nullptr) return L"null";
  const bool ours = guid->Data3 == 0x4000 && std::memcmp(guid->Data4, kGuidTail, 8) == 0;
  return ours ? wchar_t(guid->Data2) + std::to_wstring(guid->Data1) : L"a GUID of nobody";
}

// Where a call wants something back, only the presence of the place matters.
template <class Value>
std::wstring Show(Value* place) {
  const wchar_t* const name = std::is_same_v<Value, GUID>      ? L"guid"
                              : std::is_same_v<Value, wchar_t> ? L"buffer"
                              : std::is_same_v<Value, Size>    ? L"length"
                                                               : L"out";
  return place == nullptr ? L"null" : name;
}

template <class... Args>
std::wstring ShowAll(const Args&... args) {
  std::wstring text;
  ((text += text.empty() ? Show(args) : L", " + Show(args)), ...);
  return text;
}

Result Ask(const std::wstring& operation, const std::wstring& line, Result usual) {
  if (!RecorderCall(operation.c_str(), line.c_str(), &usual)) ThrowScripted();
  return usual;
}

Result StateNumber(const std::wstring& name) {
  return static_cast<Result>(std::wcstol(RecorderState(name.c_str()), nullptr, 10));
}

/// The line of that index; empty after the last one.
std::wstring StateLine(const wchar_t* name, Number index) {
  std::wstring line;
  for (Text at = RecorderState(name); *at != L'\0'; ++at) {
    if (*at == L'\n')
      --index;
    else if (index == 0)
      line += *at;
  }
  return line;
}

Result LineCount(const wchar_t* name) {
  Result count = 0;
  while (!StateLine(name, count).empty()) ++count;
  return count;
}

bool WritesGuids() {
  return *RecorderState(L"no GUIDs") == L'\0';
}

/// Hands a text out as the component does: too small a buffer is left alone.
Result GiveText(const std::wstring& text, wchar_t* buffer, std::uint32_t* length) {
  const std::uint32_t capacity = *length;
  *length = static_cast<std::uint32_t>(text.size() + 1);
  if (buffer == nullptr) return Sigil::kSuccess;
  if (capacity < *length) return Sigil::kTargetTooSmall;
  std::wmemcpy(buffer, text.c_str(), *length);
  return Sigil::kSuccess;
}

/// Hands an object out, unless the call has failed.
template <class Made, class Interface, class... Args>
Result GiveNew(Result result, Interface** out, const Args&... args) {
  if (!Sigil::Failed(result)) *out = new Made(args...);
  return result;
}

template <class Interface>
class Recorded : public Interface {
 public:
  explicit Recorded(const wchar_t* kind, const std::wstring& name = {})
      : m_kind(kind), m_shown(name.empty() ? m_kind : m_kind + L"[" + name + L"]") {
    RecorderLive(+1);
  }
  virtual ~Recorded() { RecorderLive(-1); }

  std::uint32_t AddRef() override {
    RecorderAdd((m_shown + L"::AddRef()").c_str());
    return ++m_references;
  }
  std::uint32_t Release() override {
    const std::uint32_t left = --m_references;
    const std::wstring operation = m_kind + L"::Release";
    const std::wstring rest = left == 0 ? L"" : L" leaves " + std::to_wstring(left);
    const std::wstring line = m_shown + L"::Release()" + rest;
    if (left == 0) delete this;
    Ask(operation, line, 0);
    return left;
  }

 protected:
  template <class... Args>
  Result Call(const char* operation, const Args&... args) {
    return Usual(0, operation, args...);
  }

  /// A call that gives `usual` when the script says nothing.
  template <class... Args>
  Result Usual(Result usual, const char* operation, const Args&... args) {
    const std::wstring name = L"::" + std::wstring(operation, operation + std::strlen(operation));
    return Ask(m_kind + name, m_shown + name + L"(" + ShowAll(args...) + L")", usual);
  }

 private:
  std::wstring m_kind;
  std::wstring m_shown;
  std::uint32_t m_references = 1;
};

class TestWatermark : public Recorded<Sigil::Watermark> {
 public:
  explicit TestWatermark(unsigned number)
      : Recorded(L"Watermark", L"W" + std::to_wstring(number)), m_guid(MakeGuid(L'W', number)) {}

  Result GetId(GUID* guid) override {
    const Result result = Call(__func__, guid);
    if (!Sigil::Failed(result) && WritesGuids()) *guid = m_guid;
    return result;
  }
  Result SetName(Text text) override { return Call(__func__, text); }
  Result SetText(Text text) override { return Call(__func__, text); }
  Result SetFontName(Text text) override { return Call(__func__, text); }
  Result SetFontSize(double size) override { return Call(__func__, size); }
  Result SetBold(Number flag) override { return Call(__func__, flag); }
  Result SetItalic(Number flag) override { return Call(__func__, flag); }
  Result SetUnderLine(Number flag) override { return Call(__func__, flag); }
  Result SetFit(Number flag) override { return Call(__func__, flag); }
  Result SetRepeatFirstAxis(Number flag) override { return Call(__func__, flag); }
  Result SetRepeatSecondAxis(Number flag) override { return Call(__func__, flag); }
  Result SetColor(Number color) override { return Call(__func__, color); }
  Result SetXOffset(double offset) override { return Call(__func__, offset); }
  Result SetYOffset(double offset) override { return Call(__func__, offset); }
  Result SetRotate(Number degrees) override { return Call(__func__, degrees); }
  Result SetPrintPos(Number position) override { return Call(__func__, position); }
  Result SetOpacity(Number percent) override { return Call(__func__, percent); }
  Result SetPositionOption(Number option) override { return Call(__func__, option); }
  Result SetRepeatVSpace(Number space) override { return Call(__func__, space); }
  Result SetRepeatHSpace(Number space) override { return Call(__func__, space); }

 private:
  GUID m_guid;
};

/// Serves as last setting and, under the kind "CustomSetting", as custom setting.
class TestLastSetting : public Recorded<Sigil::LastSetting> {
 public:
  using Recorded::Recorded;

  Result SetName(Text text) override { return Call(__func__, text); }
  Result SetEnable(Number flag) override { return Call(__func__, flag); }
  Result SetWatermarks(const GUID* first, Size count) override {
    std::wstring list;
    for (Size i = 0; i < count; ++i) list += (i == 0 ? L"" : L" ") + Show(first + i);
    return Call(__func__, list, count);
  }
};

class TestPrinterSettings : public Recorded<Sigil::PrinterSettings> {
 public:
  explicit TestPrinterSettings(const wchar_t* name)
      : Recorded(L"PrinterSettings", name), m_name(name) {}

  Result Save(Number mode) override { return Call(__func__, mode); }
  Result Commit() override { return Call(__func__); }
  Result GetLastSetting(Sigil::LastSetting** out) override {
    return GiveNew<TestLastSetting>(Call(__func__, out), out, L"LastSetting", m_name);
  }
  Result GetCustomSetting(Text name, Sigil::LastSetting** out) override {
    return GiveNew<TestLastSetting>(Call(__func__, name, out), out, L"CustomSetting", m_name);
  }
  Result CreateCustomSetting(Sigil::LastSetting** out) override {
    return GiveNew<TestLastSetting>(Call(__func__, out), out, L"CustomSetting", m_name);
  }
  Result GetWatermarkInfo(Number index, GUID* guid, wchar_t* buffer, Size capacity) override {
    const Result result = Call(__func__, index, guid, buffer, capacity);
    if (Sigil::Failed(result)) return result;
    if (WritesGuids()) *guid = MakeGuid(L'O', static_cast<unsigned>(index) + 1);
    std::wmemset(buffer, L'透', capacity);  // the whole capacity, so that a short buffer shows
    buffer[capacity] = L'\0';
    return result;
  }
  Result GetWatermarkCount() override {
    return Usual(StateNumber(L"watermarks " + m_name), __func__);
  }
  Result DeleteWatermark(const GUID* guid) override { return Call(__func__, guid); }
  Result CreateWatermark(Sigil::Watermark** out) override {
    // A number is spent on a failure too.
    return GiveNew<TestWatermark>(Call(__func__, out), out, RecorderNextNumber(L"Watermark"));
  }

 private:
  std::wstring m_name;
};

class TestSettings : public Recorded<Sigil::Settings> {
 public:
  TestSettings() : Recorded(L"Settings") {}

  Result Save(Number mode) override { return Call(__func__, mode); }
  Result Commit() override { return Call(__func__); }
  Result GetSettingFileDir(wchar_t* buffer, Size* length) override {
    const Result result = Call(__func__, buffer, *length);
    if (result != 0) return result;
    const Result given = GiveText(RecorderState(L"setting folder"), buffer, length);
    if (buffer != nullptr && *RecorderState(L"told length") != L'\0')
      *length = static_cast<Size>(StateNumber(L"told length"));
    return given;
  }
  Result GetPrinterSettingCount() override {
    return Usual(LineCount(L"printer settings"), __func__);
  }
  Result GetPrinterSettingName(Number index, wchar_t* buffer, Size* length) override {
    return NameOf(__func__, L"printer settings", index, buffer, length);
  }
  Result GetDriverSettingCount() override { return Usual(LineCount(L"driver settings"), __func__); }
  Result GetDriverSettingName(Number index, wchar_t* buffer, Size* length) override {
    return NameOf(__func__, L"driver settings", index, buffer, length);
  }
  Result GetPrinterSettings(Text name, Sigil::PrinterSettings** out) override {
    return GiveNew<TestPrinterSettings>(Call(__func__, name), out, name);
  }
  Result DeletePrinterSetting(Text path, Text text) override { return Call(__func__, path, text); }
  Result DeleteDriverSetting(Text path, Text text) override { return Call(__func__, path, text); }
  Result GetExcludePrinterCount() override { return Usual(StateNumber(L"excludes"), __func__); }
  Result GetExcludePrinter(Number index, GUID* guid, wchar_t* buffer, Size* length) override {
    return EntryOf(__func__, L'E', index, guid, buffer, length);
  }
  Result AddExcludePrinter(Text name, GUID* guid) override {
    const Result result = Call(__func__, name, guid);
    if (result == 0) *guid = MakeGuid(L'A', RecorderNextNumber(L"A"));
    return result;
  }
  Result DeleteExcludePrinter(const GUID* guid) override { return Call(__func__, guid); }
  Result GetSecondExcludeCount() override {
    return Usual(StateNumber(L"second excludes"), __func__);
  }
  Result GetSecondExclude(Number index, GUID* guid, wchar_t* buffer, Size* length) override {
    return EntryOf(__func__, L'S', index, guid, buffer, length);
  }
  Result DeleteSecondExclude(const GUID* guid) override { return Call(__func__, guid); }
  Result Lock() override { return Call(__func__); }
  Result UnLock() override { return Call(__func__); }
  Result SetUseContentLog(BYTE flag) override { return Call(__func__, flag); }

 private:
  Result NameOf(const char* operation, const wchar_t* state, Number index, wchar_t* buffer,
                Size* length) {
    const Result result = Call(operation, index, buffer, *length);
    if (Sigil::Failed(result)) return result;
    const Result given = GiveText(StateLine(state, index), buffer, length);
    return Sigil::Failed(given) ? given : result;
  }
  Result EntryOf(const char* operation, wchar_t letter, Number index, GUID* guid, wchar_t* buffer,
                 Size* length) {
    const Result result = Call(operation, index, guid, buffer, length);
    if (result == 0) *guid = MakeGuid(letter, static_cast<unsigned>(index) + 1);
    return result;
  }
};

/// Its display text differs from its text, so that one used for the other shows.
class TestString : public Recorded<Sigil::String> {
 public:
  TestString() : Recorded(L"String", std::to_wstring(RecorderNextNumber(L"String"))) {}

  Text GetDisplayText() override {
    Call(__func__);
    return m_displayText.c_str();
  }
  Result SetKind(Number kind) override {
    m_kind = kind;
    return Call(__func__, kind);
  }
  Result GetKind() override { return Usual(m_kind, __func__); }
  Result SetText(Text text) override {
    m_text = text;
    m_displayText = L"<" + m_text + L">";
    return Call(__func__, text);
  }
  Text GetText() override {
    Call(__func__);
    return m_text.c_str();
  }

 private:
  Number m_kind = -1;
  std::wstring m_text, m_displayText;
};

}  // namespace

extern "C" {

RECORDER_API Result SigilCreateInstance(const GUID* first, const GUID* second, void** out) {
  const auto wanted = [&](const GUID(&identities)[2]) {
    return *first == identities[0] && *second == identities[1];
  };
  const bool settings = wanted(kSettings);
  const bool text = wanted(kString);
  const std::wstring kind = settings ? L"Settings" : text ? L"String" : L"unknown";
  const Result result = Ask(L"SigilCreateInstance", L"SigilCreateInstance(" + kind + L")",
                            settings || text ? Sigil::kSuccess : Sigil::kCannotCreate);
  if (Sigil::Failed(result)) return result;
  if (settings) *out = static_cast<Sigil::Settings*>(new TestSettings);
  if (text) *out = static_cast<Sigil::String*>(new TestString);
  return result;
}
}
