// A Settings component by another compiler, of whose run-time it has nothing either. It tells the
// recorder of each call in the words of the test component (../test_component), takes the same
// script and holds the same state; so one transcript is the record of both. A scripted throw is
// what that compiler makes of a C++ throw.

#include "component/sigil_interfaces.h"
#include "tests/foreign/line.h"
#include "tests/recorder/recorder.h"

namespace {

using foreign::Line;

using Result = std::int32_t;
using Number = std::int32_t;
using Size = std::uint32_t;
using Text = const wchar_t*;

// --- Memory: what was made for one pass goes with the library after it

alignas(8) char g_memory[1 << 20];
unsigned g_used;

void* Take(unsigned bytes) {
  void* const block = g_memory + g_used;
  g_used += (bytes + 7) & ~7U;
  return block;
}

Text Copy(Text text) {
  unsigned units = 1;
  while (text[units - 1] != L'\0') ++units;
  auto* const copy = static_cast<wchar_t*>(Take(units * sizeof(wchar_t)));
  for (unsigned i = 0; i < units; ++i) copy[i] = text[i];
  return copy;
}

// --- The identities, written here once more, so that a slip in the library's own shows

constexpr GUID kSettings[] = {
    {0x939D0FE0, 0x3386, 0x466D, {0xA1, 0x45, 0xE3, 0x07, 0xA9, 0xAA, 0x5D, 0xC9}},
    {0x8CB443F7, 0xE498, 0x4A02, {0xA5, 0x0A, 0x66, 0x75, 0x47, 0x38, 0xD1, 0x24}}};
constexpr GUID kString[] = {
    {0x9195CE54, 0x518B, 0x48F8, {0x87, 0xC8, 0xBA, 0x2F, 0xFC, 0x92, 0xBC, 0x9E}},
    {0xFB2A1FC4, 0x6B0F, 0x4C8C, {0x89, 0x0B, 0x61, 0x0A, 0x9E, 0x43, 0x29, 0xC3}}};

// --- What calls and values look like in the record

constexpr GUID MakeGuid(wchar_t letter, unsigned number) {
  return {
      number, static_cast<WORD>(letter), 0x4000, {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18}};
}

Line& Show(Line& line, Text text) {
  return text == nullptr ? line << L"null" : line << L"\"" << text << L"\"";
}
Line& Show(Line& line, Number number) {
  return line << number;
}
Line& Show(Line& line, Size number) {
  return line << number;
}
Line& Show(Line& line, BYTE number) {
  return line << static_cast<Size>(number);
}
Line& Show(Line& line, double number) {
  return line << number;
}
Line& Show(Line& line, const Line& plain) {
  return line << plain.Text();
}
Line& Show(Line& line, const GUID* guid) {
  if (guid == nullptr) return line << L"null";
  const wchar_t letter[] = {static_cast<wchar_t>(guid->Data2), L'\0'};
  const bool ours = *guid == MakeGuid(letter[0], guid->Data1);
  return ours ? line << letter << static_cast<Size>(guid->Data1) : line << L"a GUID of nobody";
}
Line& Show(Line& line, GUID* place) {
  return line << (place == nullptr ? L"null" : L"guid");
}
Line& Show(Line& line, wchar_t* place) {
  return line << (place == nullptr ? L"null" : L"buffer");
}
Line& Show(Line& line, Size* place) {
  return line << (place == nullptr ? L"null" : L"length");
}
template <class Interface>
Line& Show(Line& line, Interface** place) {
  return line << (place == nullptr ? L"null" : L"out");
}

Result Ask(const Line& operation, const Line& line, Result usual) {
  constexpr DWORD kThrow = 0xE06D7363, kFinal = 1;
  constexpr DWORD kWhat[] = {0x19930520, 0, 0};
  if (!RecorderCall(operation.Text(), line.Text(), &usual))
    RaiseException(kThrow, kFinal, 3, kWhat);
  return usual;
}

// --- State

Result StateNumber(Text name) {
  Result number = 0;
  for (Text digit = RecorderState(name); *digit != L'\0'; ++digit)
    number = number * 10 + (*digit - L'0');
  return number;
}

bool WritesGuids() {
  return *RecorderState(L"no GUIDs") == L'\0';
}

/// The line of that index; empty after the last one.
Line StateLine(Text name, Number index) {
  Line line;
  for (Text at = RecorderState(name); *at != L'\0'; ++at) {
    const wchar_t unit[] = {*at, L'\0'};
    if (*at == L'\n')
      --index;
    else if (index == 0)
      line << unit;
  }
  return line;
}

Result LineCount(Text name) {
  Result count = 0;
  while (*StateLine(name, count).Text() != L'\0') ++count;
  return count;
}

Result GiveText(Text text, wchar_t* buffer, Size* length) {
  const Size capacity = *length;
  Size needed = 1;
  while (text[needed - 1] != L'\0') ++needed;
  *length = needed;
  if (buffer == nullptr) return Sigil::kSuccess;
  if (capacity < needed) return Sigil::kTargetTooSmall;
  for (Size i = 0; i < needed; ++i) buffer[i] = text[i];
  return Sigil::kSuccess;
}

// --- The objects

}  // namespace

void* operator new(std::size_t bytes) {
  return Take(bytes);
}

namespace {

template <class Made, class Interface, class... Args>
Result GiveNew(Result result, Interface** out, const Args&... args) {
  if (!Sigil::Failed(result)) *out = new Made(args...);
  return result;
}

template <class Interface>
class Recorded : public Interface {
 public:
  Recorded(Text kind, const Line& name) : m_kind(kind) {
    m_shown << kind;
    if (*name.Text() != L'\0') m_shown << L"[" << name.Text() << L"]";
    RecorderLive(+1);
  }

  std::uint32_t AddRef() override {
    RecorderAdd((Line() << m_shown.Text() << L"::AddRef()").Text());
    return ++m_references;
  }
  std::uint32_t Release() override {
    Line operation, line;
    operation << m_kind << L"::Release";
    line << m_shown.Text() << L"::Release()";
    if (--m_references == 0)
      RecorderLive(-1);
    else
      line << L" leaves " << m_references;
    Ask(operation, line, 0);
    return m_references;
  }

 protected:
  template <class... Args>
  Result Call(const char* operation, const Args&... args) {
    return Usual(0, operation, args...);
  }

  template <class... Args>
  Result Usual(Result usual, const char* operation, const Args&... args) {
    Line name, line;
    name << m_kind << L"::" << operation;
    line << m_shown.Text() << L"::" << operation << L"(";
    Text comma = L"";
    ((line << comma, Show(line, args), comma = L", "), ...);
    return Ask(name, line << L")", usual);
  }

 private:
  Text m_kind;
  Line m_shown;
  std::uint32_t m_references = 1;
};

Line Named(Text name) {
  Line line;
  return line << name;
}

Line Numbered(const char* letter, unsigned number) {
  Line line;
  return line << letter << number;
}

class ForeignWatermark : public Recorded<Sigil::Watermark> {
 public:
  explicit ForeignWatermark(unsigned number)
      : Recorded(L"Watermark", Numbered("W", number)), m_guid(MakeGuid(L'W', number)) {}

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

class ForeignLastSetting : public Recorded<Sigil::LastSetting> {
 public:
  ForeignLastSetting(Text kind, Text name) : Recorded(kind, Named(name)) {}

  Result SetName(Text text) override { return Call(__func__, text); }
  Result SetEnable(Number flag) override { return Call(__func__, flag); }
  Result SetWatermarks(const GUID* first, Size count) override {
    Line list;
    for (Size i = 0; i < count; ++i) Show(list << (i == 0 ? L"" : L" "), first + i);
    return Call(__func__, list, count);
  }
};

class ForeignPrinterSettings : public Recorded<Sigil::PrinterSettings> {
 public:
  explicit ForeignPrinterSettings(Text name)
      : Recorded(L"PrinterSettings", Named(name)), m_name(Copy(name)) {}

  Result Save(Number mode) override { return Call(__func__, mode); }
  Result Commit() override { return Call(__func__); }
  Result GetLastSetting(Sigil::LastSetting** out) override {
    return GiveNew<ForeignLastSetting>(Call(__func__, out), out, L"LastSetting", m_name);
  }
  Result GetCustomSetting(Text name, Sigil::LastSetting** out) override {
    return GiveNew<ForeignLastSetting>(Call(__func__, name, out), out, L"CustomSetting", m_name);
  }
  Result CreateCustomSetting(Sigil::LastSetting** out) override {
    return GiveNew<ForeignLastSetting>(Call(__func__, out), out, L"CustomSetting", m_name);
  }
  Result GetWatermarkInfo(Number index, GUID* guid, wchar_t* buffer, Size capacity) override {
    const Result result = Call(__func__, index, guid, buffer, capacity);
    if (Sigil::Failed(result)) return result;
    if (WritesGuids()) *guid = MakeGuid(L'O', static_cast<unsigned>(index) + 1);
    for (Size i = 0; i < capacity; ++i) buffer[i] = L'透';
    buffer[capacity] = L'\0';
    return result;
  }
  Result GetWatermarkCount() override {
    Line name;
    name << L"watermarks " << m_name;
    return Usual(StateNumber(name.Text()), __func__);
  }
  Result DeleteWatermark(const GUID* guid) override { return Call(__func__, guid); }
  Result CreateWatermark(Sigil::Watermark** out) override {
    return GiveNew<ForeignWatermark>(Call(__func__, out), out, RecorderNextNumber(L"Watermark"));
  }

 private:
  Text m_name;
};

class ForeignSettings : public Recorded<Sigil::Settings> {
 public:
  ForeignSettings() : Recorded(L"Settings", Line()) {}

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
    return GiveNew<ForeignPrinterSettings>(Call(__func__, name), out, name);
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
  Result NameOf(const char* operation, Text state, Number index, wchar_t* buffer, Size* length) {
    const Result result = Call(operation, index, buffer, *length);
    if (Sigil::Failed(result)) return result;
    const Result given = GiveText(StateLine(state, index).Text(), buffer, length);
    return Sigil::Failed(given) ? given : result;
  }
  Result EntryOf(const char* operation, wchar_t letter, Number index, GUID* guid, wchar_t* buffer,
                 Size* length) {
    const Result result = Call(operation, index, guid, buffer, length);
    if (result == 0) *guid = MakeGuid(letter, static_cast<unsigned>(index) + 1);
    return result;
  }
};

class ForeignString : public Recorded<Sigil::String> {
 public:
  ForeignString() : Recorded(L"String", Numbered("", RecorderNextNumber(L"String"))) {}

  Text GetDisplayText() override {
    Call(__func__);
    return m_displayText;
  }
  Result SetKind(Number kind) override {
    m_kind = kind;
    return Call(__func__, kind);
  }
  Result GetKind() override { return Usual(m_kind, __func__); }
  Result SetText(Text text) override {
    m_text = Copy(text);
    m_displayText = Copy((Line() << L"<" << text << L">").Text());
    return Call(__func__, text);
  }
  Text GetText() override {
    Call(__func__);
    return m_text;
  }

 private:
  Number m_kind = -1;
  Text m_text = L"", m_displayText = L"";
};

}  // namespace

// --- Where Windows and the library enter

extern "C" {

// What that compiler leaves to a run-time.
int _fltused;

int _purecall() {
  return 0;
}

void* memcpy(void* target, const void* source, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i)
    static_cast<volatile char*>(target)[i] = static_cast<const char*>(source)[i];
  return target;
}

int __stdcall DllMain(void* /*instance*/, DWORD reason, void* /*reserved*/) {
  constexpr DWORD kDetach = 0, kAttach = 1;
  if (reason != kDetach && reason != kAttach) return 1;
  RecorderLive(reason == kAttach ? +1 : -1);
  RecorderAdd(reason == kAttach ? L"component loaded" : L"component unloaded");
  return 1;
}

RECORDER_API Result SigilCreateInstance(const GUID* first, const GUID* second, void** out) {
  const bool settings = *first == kSettings[0] && *second == kSettings[1];
  const bool text = *first == kString[0] && *second == kString[1];
  Line operation, line;
  operation << L"SigilCreateInstance";
  line << operation.Text() << L"("
       << (settings ? L"Settings"
           : text   ? L"String"
                    : L"unknown")
       << L")";
  const Result result =
      Ask(operation, line, settings || text ? Sigil::kSuccess : Sigil::kCannotCreate);
  if (Sigil::Failed(result)) return result;
  if (settings) *out = static_cast<Sigil::Settings*>(new ForeignSettings);
  if (text) *out = static_cast<Sigil::String*>(new ForeignString);
  return result;
}

}  // extern "C"
