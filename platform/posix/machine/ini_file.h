#pragma once

// The text of an INI file, kept line by line: a change touches its own line, and all others keep
// their bytes. Any bytes can be parsed, in linear time.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class IniFile {
 public:
  enum class Encoding { kAnsi, kUtf8, kUtf16 };

  struct Line {
    std::size_t number = 0;  ///< From 1 on; 0 for a new line.
    std::string bytes;       ///< With the line end.
    bool isEntry = false;
    std::wstring key;
    std::optional<std::wstring> value;  ///< Null for a key without '='.
  };

  struct Section {
    std::wstring name;
    Line header;
    std::vector<Line> lines;  ///< Without the header.

    /// Returns the first line with this key, or null.
    const Line* Find(std::wstring_view key) const;
  };

  /// `encoding` is used for a text without byte order mark.
  IniFile(std::string_view bytes, Encoding encoding);

  const std::vector<Section>& Sections() const { return m_sections; }
  /// Returns the lines before the first section.
  const std::vector<Line>& Head() const { return m_head.lines; }
  /// Returns whether the line is well-formed in the file's encoding and has no NUL.
  bool IsText(const Line& line) const;
  /// Returns the first section of this name, or null.
  const Section* Find(std::wstring_view section) const;

  void Set(std::wstring_view section, std::wstring_view key, std::wstring_view value);

  std::string Bytes() const;

 private:
  void AddLine(std::string_view bytes);
  std::size_t UnitSize() const { return m_encoding == Encoding::kUtf16 ? 2 : 1; }
  std::string Encode(std::wstring_view text) const;
  std::wstring Decode(std::string_view bytes) const;
  Line MakeEntry(std::wstring_view key, std::wstring_view value) const;
  void EndLine(std::string& bytes) const;

  Encoding m_encoding;
  std::string m_mark;
  std::size_t m_lines = 0;  ///< Lines read so far.
  Section m_head;           ///< Without a header.
  std::vector<Section> m_sections;
};

/// Returns `text` without the blanks around it.
std::wstring_view Trim(std::wstring_view text);

}  // namespace platform
