#include "platform/posix/machine/ini_file.h"

#include <algorithm>

#include "platform/posix/ansi.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/utf.h"

namespace platform {

namespace {

using Encoding = IniFile::Encoding;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// Space, the controls that move the print position, and the end-of-file character of old.
constexpr std::wstring_view kBlanks = L" \t\n\v\f\r\x1A";

/// Returns the size of the first line with its end: CR, LF or both.
std::size_t FirstLineSize(std::string_view bytes, std::size_t unitSize) {
  const auto holds = [=](std::size_t at, char unit) {
    return at + unitSize <= bytes.size() && bytes[at] == unit &&
           (unitSize == 1 || bytes[at + 1] == '\0');
  };
  for (std::size_t at = 0; at < bytes.size(); at += unitSize) {
    if (holds(at, '\n')) return at + unitSize;
    if (holds(at, '\r')) return at + unitSize + (holds(at + unitSize, '\n') ? unitSize : 0);
  }
  return bytes.size();
}

std::wstring_view WithoutQuotes(std::wstring_view text) {
  const bool quoted = text.size() >= 2 && (text.front() == L'"' || text.front() == L'\'') &&
                      text.front() == text.back();
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// Returns the name in a section's header, or null for any other line.
std::optional<std::wstring_view> HeaderName(std::wstring_view text) {
  const std::size_t end = text.rfind(L']');
  if (!text.starts_with(L'[') || end == text.npos) return std::nullopt;
  return Trim(text.substr(1, end - 1));
}

void ParseEntry(std::wstring_view text, IniFile::Line& line) {
  line.isEntry = !text.empty() && text.front() != L';';
  if (!line.isEntry) return;
  const std::size_t equals = text.find(L'=');
  line.key = Trim(text.substr(0, equals));
  if (equals != text.npos) line.value = WithoutQuotes(Trim(text.substr(equals + 1)));
}

template <typename Lines>
auto FindEntry(Lines& lines, std::wstring_view key) {
  return std::find_if(lines.begin(), lines.end(), [key](const IniFile::Line& line) {
    return line.isEntry && SameName(line.key, key);
  });
}

IniFile::Line& LastLine(IniFile::Section& section) {
  return section.lines.empty() ? section.header : section.lines.back();
}

template <typename Sections>
auto FindSection(Sections& sections, std::wstring_view name) {
  return std::find_if(sections.begin(), sections.end(),
                      [name](const auto& section) { return SameName(section.name, name); });
}

}  // namespace

std::wstring_view Trim(std::wstring_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

const IniFile::Line* IniFile::Section::Find(std::wstring_view key) const {
  const auto found = FindEntry(lines, key);
  return found == lines.end() ? nullptr : &*found;
}

IniFile::IniFile(std::string_view bytes, Encoding encoding) : m_encoding(encoding) {
  if (bytes.starts_with(kUtf16Mark)) {
    m_encoding = Encoding::kUtf16;
    m_mark = kUtf16Mark;
  } else if (encoding == Encoding::kUtf8 && bytes.starts_with(kUtf8Mark)) {
    m_mark = kUtf8Mark;
  }
  bytes.remove_prefix(m_mark.size());
  while (!bytes.empty()) {
    const std::size_t size = FirstLineSize(bytes, UnitSize());
    AddLine(bytes.substr(0, size));
    bytes.remove_prefix(size);
  }
}

void IniFile::AddLine(std::string_view bytes) {
  const std::wstring decoded = Decode(bytes);
  std::wstring_view text = decoded;
  text = Trim(text.substr(0, text.find(L'\0')));
  const auto name = HeaderName(text);
  if (name) m_sections.emplace_back().name = *name;
  Section& section = m_sections.empty() ? m_head : m_sections.back();
  Line& line = name ? section.header : section.lines.emplace_back();
  line.number = ++m_lines;
  line.bytes = bytes;
  if (!name) ParseEntry(text, line);
}

const IniFile::Section* IniFile::Find(std::wstring_view section) const {
  const auto found = FindSection(m_sections, section);
  return found == m_sections.end() ? nullptr : &*found;
}

bool IniFile::IsText(const Line& line) const {
  const std::wstring text = Decode(line.bytes);
  return text.find(L'\0') == text.npos && Encode(text) == line.bytes;
}

void IniFile::Set(std::wstring_view section, std::wstring_view key, std::wstring_view value) {
  auto target = FindSection(m_sections, section);
  if (target == m_sections.end()) {
    EndLine(LastLine(m_sections.empty() ? m_head : m_sections.back()).bytes);
    target = m_sections.emplace(m_sections.end());
    target->name = section;
    target->header.bytes = Encode(L"[" + target->name + L"]\r\n");
  }
  auto& lines = target->lines;
  const auto found = FindEntry(lines, key);
  if (found != lines.end()) {
    *found = MakeEntry(found->key, value);
    return;
  }
  // A new entry goes before the blank lines that separate the section from the next one.
  const auto last = std::find_if(lines.rbegin(), lines.rend(), [this](const Line& line) {
                      return line.isEntry || !Trim(Decode(line.bytes)).empty();
                    }).base();
  EndLine((last == lines.begin() ? target->header : *std::prev(last)).bytes);
  lines.insert(last, MakeEntry(key, value));
}

std::string IniFile::Bytes() const {
  std::string bytes = m_mark;
  const auto add = [&bytes](const Section& section) {
    bytes += section.header.bytes;
    for (const Line& line : section.lines) bytes += line.bytes;
  };
  add(m_head);
  std::for_each(m_sections.begin(), m_sections.end(), add);
  return bytes;
}

IniFile::Line IniFile::MakeEntry(std::wstring_view key, std::wstring_view value) const {
  Line line;
  line.bytes = Encode(std::wstring(key) + L'=' + std::wstring(value) + L"\r\n");
  line.isEntry = true;
  line.key = key;
  line.value = value;
  return line;
}

/// Adds a missing line end. If the file was cut in the middle of a UTF-16 unit, U+FFFD takes the
/// place of the half, because everything behind it would be read shifted.
void IniFile::EndLine(std::string& bytes) const {
  if (bytes.empty()) return;
  if (bytes.size() % UnitSize() != 0) bytes.replace(bytes.size() - 1, 1, Encode(L"\xFFFD"));
  const std::string_view last = std::string_view(bytes).substr(bytes.size() - UnitSize());
  if (last != Encode(L"\n") && last != Encode(L"\r")) bytes += Encode(L"\r\n");
}

std::string IniFile::Encode(std::wstring_view text) const {
  switch (m_encoding) {
    case Encoding::kUtf16:
      return ToUtf16LeBytes(text);
    case Encoding::kUtf8:
      return ToUtf8(text);
    default:
      return ToAnsi(text);
  }
}

std::wstring IniFile::Decode(std::string_view bytes) const {
  switch (m_encoding) {
    case Encoding::kUtf16:
      return FromUtf16LeBytes(bytes);
    case Encoding::kUtf8:
      return FromUtf8(bytes);
    default:
      return FromAnsi(bytes);
  }
}

}  // namespace platform
