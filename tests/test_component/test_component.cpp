// The Settings component of the tests: it records each call, answers as the test has scripted, and
// holds nothing but what the recorder's state tells:
//
//   "setting folder"      what GetSettingFileDir gives
//   "told length"         the length that it tells beside the text, where not the text's own
//   "printer settings"    names, one a line; also "driver settings"
//   "excludes"            a number of entries; also "second excludes"
//   "watermarks NAME"     a number of watermarks in the record of that name
//   "no GUIDs"            set: a watermark's GUID is never written, whatever the result
//   "throw"               how another compiler's component throws: 0 again from a catch, 1 once,
//                         2 without an object
//
// A GUID is recorded as its letter and number: E and S for exclude entries, A for an added one, O
// for the watermarks a record holds, W for new ones. State never changes by itself.
//
// Scripted results: a negative one and 2 hand out no object, any other does, also where the
// interface takes only 0 for success. A scripted throw leaves the component as an exception of a
// class of its own, whose destructor is gone with the library; this works only where modules share
// their C++ library. A Release that throws has released.
//
// Another compiler builds this file too (../foreign), without a C++ library: texts are the
// recorder's, and what a run-time does is behind run_time.h.

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

GUID MakeGuid(wchar_t letter, unsigned number) {
  return {
      number, static_cast<WORD>(letter), 0x4000, {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18}};
}

using Part = RecorderPart;

Part Word(Text text) {
  return {Part::kWord, text};
}

/// Two parts made one text, which stays.
Text Joined(Part first, Part second, Text between = L"") {
  const Part parts[] = {first, second};
  return RecorderText(parts, 2, between);
}

Text NameOf(const GUID& guid) {
  const wchar_t letter[] = {static_cast<wchar_t>(guid.Data2), L'\0'};
  const bool isOurs = guid == MakeGuid(*letter, guid.Data1);
  return isOurs ? Joined(Word(letter), {Part::kWhole, nullptr, static_cast<double>(guid.Data1)})
                : L"a GUID of nobody";
}

/// An argument as it is recorded. Where a call wants something back, only the presence of the place
/// matters.
struct Argument : Part {
  Argument(Part part) : Part(part) {}
  Argument(Text text) : Part{kQuoted, text} {}
  Argument(Number number) : Part{kWhole, nullptr, static_cast<double>(number)} {}
  Argument(Size number) : Part{kWhole, nullptr, static_cast<double>(number)} {}
  Argument(double number) : Part{kReal, nullptr, number} {}
  Argument(const GUID* guid) : Part(Word(guid == nullptr ? nullptr : NameOf(*guid))) {}
  Argument(GUID* place) : Argument(place, L"guid") {}
  Argument(wchar_t* place) : Argument(place, L"buffer") {}
  Argument(Size* place) : Argument(place, L"length") {}
  template <class Interface>
  Argument(Interface** place) : Argument(place, L"out") {}

 private:
  Argument(const void* place, Text name) : Part(Word(place == nullptr ? nullptr : name)) {}
};

/// Records a call, which gives `usual` when the script says nothing.
template <class... Arguments>
Result Record(Text kind, Text name, const char* operation, Result usual, Arguments... arguments) {
  const Part parts[] = {Argument(arguments)..., Part()};
  if (!RecorderCall(kind, name, operation, parts, sizeof...(arguments), &usual)) ThrowScripted();
  return usual;
}

Result LineCount(Text name) {
  Result count = 0;
  while (*RecorderStateLine(name, count) != L'\0') ++count;
  return count;
}

bool WritesGuids() {
  return *RecorderState(L"no GUIDs") == L'\0';
}

/// Hands a text out as the component does: too small a buffer is left alone.
Result GiveText(Text text, wchar_t* buffer, Size* length) {
  const Size capacity = *length;
  for (*length = 1; text[*length - 1] != L'\0';) ++*length;
  if (buffer == nullptr) return Sigil::kSuccess;
  if (capacity < *length) return Sigil::kTargetTooSmall;
  for (Size i = 0; i < *length; ++i) buffer[i] = text[i];
  return Sigil::kSuccess;
}

/// The result of a call that has not failed and hands out no object all the same.
constexpr Result kNoObject = 2;

/// Hands an object out, unless the call has failed.
template <class Made, class Interface, class... Arguments>
Result GiveNew(Result result, Interface** out, Arguments... arguments) {
  if (!Sigil::Failed(result) && result != kNoObject) *out = new Made(arguments...);
  return result;
}

template <class Interface>
class Recorded : public Interface {
 public:
  Recorded(Text kind, Text name) : m_kind(kind), m_name(name) { RecorderLive(+1); }
  virtual ~Recorded() { RecorderLive(-1); }

  std::uint32_t AddRef() override {
    Call(__func__);
    return ++m_references;
  }
  std::uint32_t Release() override {
    const Size left = --m_references;
    const Text kind = m_kind;
    const Text name = left == 0 ? m_name : Joined(Word(m_name), Word(L"still held"), L", ");
    if (left == 0) delete this;
    Record(kind, name, __func__, 0);
    return left;
  }

 protected:
  template <class... Arguments>
  Result Call(const char* operation, Arguments... arguments) const {
    return Usual(0, operation, arguments...);
  }
  template <class... Arguments>
  Result Usual(Result usual, const char* operation, Arguments... arguments) const {
    return Record(m_kind, m_name, operation, usual, arguments...);
  }

  const Text m_kind, m_name;

 private:
  Size m_references = 1;
};

class TestWatermark : public Recorded<Sigil::Watermark> {
 public:
  explicit TestWatermark(unsigned number)
      : Recorded(L"Watermark", NameOf(MakeGuid(L'W', number))), m_guid(MakeGuid(L'W', number)) {}

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
    Part list = Word(L"");
    for (Size i = 0; i < count; ++i)
      list = Word(i == 0 ? NameOf(*first) : Joined(list, Word(NameOf(first[i])), L" "));
    return Call(__func__, list, count);
  }
};

class TestPrinterSettings : public Recorded<Sigil::PrinterSettings> {
 public:
  explicit TestPrinterSettings(Text name)
      : Recorded(L"PrinterSettings", Joined(Word(L""), Word(name))) {}

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
    // The whole capacity, so that a short buffer shows.
    for (Size i = 0; i < capacity; ++i) buffer[i] = L'透';
    buffer[capacity] = L'\0';
    return result;
  }
  Result GetWatermarkCount() override {
    const Text name = Joined(Word(L"watermarks"), Word(m_name), L" ");
    return Usual(RecorderStateNumber(name), __func__);
  }
  Result DeleteWatermark(const GUID* guid) override { return Call(__func__, guid); }
  Result CreateWatermark(Sigil::Watermark** out) override {
    // A number is spent on a failure too.
    return GiveNew<TestWatermark>(Call(__func__, out), out, RecorderNextNumber(L"Watermark"));
  }
};

class TestSettings : public Recorded<Sigil::Settings> {
 public:
  TestSettings() : Recorded(L"Settings", L"") {}

  Result Save(Number mode) override { return Call(__func__, mode); }
  Result Commit() override { return Call(__func__); }
  Result GetSettingFileDir(wchar_t* buffer, Size* length) override {
    const Result result = Call(__func__, buffer, *length);
    if (result != 0) return result;
    const Result given = GiveText(RecorderState(L"setting folder"), buffer, length);
    if (buffer != nullptr && *RecorderState(L"told length") != L'\0')
      *length = static_cast<Size>(RecorderStateNumber(L"told length"));
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
  Result GetExcludePrinterCount() override {
    return Usual(RecorderStateNumber(L"excludes"), __func__);
  }
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
    return Usual(RecorderStateNumber(L"second excludes"), __func__);
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
    const Result given = GiveText(RecorderStateLine(state, index), buffer, length);
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
  TestString() : Recorded(L"String", Joined(Word(L""), Argument(RecorderNextNumber(L"String")))) {}

  Text GetDisplayText() override {
    Call(__func__);
    return Joined(Word(Joined(Word(L"<"), Word(m_text))), Word(L">"));
  }
  Result SetKind(Number kind) override {
    m_textKind = kind;
    return Call(__func__, kind);
  }
  Result GetKind() override { return Usual(m_textKind, __func__); }
  Result SetText(Text text) override {
    m_text = Joined(Word(L""), Word(text));
    return Call(__func__, text);
  }
  Text GetText() override {
    Call(__func__);
    return m_text;
  }

 private:
  Number m_textKind = -1;
  Text m_text = L"";
};

}  // namespace

extern "C" RECORDER_API Result SigilCreateInstance(const GUID* first, const GUID* second,
                                                   void** out) {
  const auto wanted = [&](const GUID(&identities)[2]) {
    return *first == identities[0] && *second == identities[1];
  };
  const bool isSettings = wanted(kSettings), isString = wanted(kString);
  const Text name = isSettings ? L"Settings" : isString ? L"String" : L"unknown";
  const Result usual = isSettings || isString ? Sigil::kSuccess : Sigil::kCannotCreate;
  const Result result = Record(L"", L"", __func__, usual, Word(name));
  if (Sigil::Failed(result)) return result;
  if (isSettings) *out = static_cast<Sigil::Settings*>(new TestSettings);
  if (isString) *out = static_cast<Sigil::String*>(new TestString);
  return result;
}
