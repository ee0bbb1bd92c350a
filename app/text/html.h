#pragma once

// One HTML page without a script or a reference to anything outside of it. Every text is escaped,
// so no text of a policy or a name becomes markup; controls are made visible.

#include <string>
#include <string_view>
#include <vector>

namespace app {

class HtmlPage {
 public:
  explicit HtmlPage(const std::string& title);

  void Heading(const std::string& text);
  void Paragraph(const std::string& text);
  /// A short statement of the page's result, marked as good or bad by words and colour.
  void Verdict(const std::string& text, bool isGood);
  /// The first row holds the headings; the first cell of each row names it.
  void Table(const std::string& caption, const std::vector<std::vector<std::string>>& rows);
  struct TextLine {
    long number;
    std::string text;
    std::vector<std::string> remarks;
  };
  /// Numbered lines of a text, each with the remarks on it.
  void Listing(const std::string& caption, const std::vector<TextLine>& lines);
  /// A picture in SVG, with a caption and a text that stands for the picture.
  void Picture(const std::string& svg, const std::string& caption, const std::string& alternative);

  /// Ends the page and returns it, in UTF-8.
  std::string Finish();

 private:
  void Cell(const std::string& tag, const std::string& text);

  std::string m_html;
};

/// The text as it stands in XML or HTML, in an attribute too.
std::string MarkupEscaped(std::string_view text);
/// The same, with controls made visible.
std::string HtmlEscaped(std::string_view text);

}  // namespace app
