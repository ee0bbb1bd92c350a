#include "app/text/html.h"

#include <cstdint>
#include <utility>

#include "platform/visible_text.h"

namespace app {
namespace {

// Colours have a contrast of 4.5 at least in both schemes. A table that is too wide for the screen
// becomes a list of its rows.
constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
<style>
:root { color-scheme: light dark; --ink: #1a1a1a; --paper: #fff; --line: #c8c8c8; --soft: #f3f3f3;
  --good: #0b5c22; --bad: #9c1212; }
@media (prefers-color-scheme: dark) { :root { --ink: #e8e8e8; --paper: #16181b; --line: #4a4d52;
  --soft: #212428; --good: #7fd99a; --bad: #ff9d94; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 72rem; padding: 1rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.45 system-ui, sans-serif; overflow-wrap: anywhere; }
h1 { font-size: 1.6rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; break-after: avoid; }
.verdict { padding: .6rem .8rem; border-left: .4rem solid; background: var(--soft); font-weight: 600; }
.good { border-color: var(--good); color: var(--good); }
.bad { border-color: var(--bad); color: var(--bad); }
table { border-collapse: collapse; width: 100%; margin: .5rem 0 1rem; }
caption { text-align: left; font-weight: 600; padding: .3rem 0; }
th, td { text-align: left; vertical-align: top; padding: .25rem .6rem .25rem 0; white-space: pre-wrap;
  border-top: 1px solid var(--line); font-weight: normal; }
thead th { font-weight: 600; border-top: 0; }
.listing { font-family: ui-monospace, monospace; font-size: .85rem; table-layout: fixed; }
.listing tr > :first-child { width: 3.5rem; text-align: right; padding-right: 1rem; }
td:first-child { min-width: 6em; }
.listing td { word-break: break-all; }
.listing .remark { display: block; color: var(--bad); font-weight: 600; word-break: normal;
  font-family: system-ui, sans-serif; }
figure { margin: 1rem 0; break-inside: avoid; }
figure img { display: block; width: 100%; max-width: 24rem; height: auto; background: #fff;
  border: 1px solid var(--line); }
@media (max-width: 40rem) {
  .data thead { position: absolute; clip-path: inset(50%); width: 1px; height: 1px; overflow: hidden; }
  .data tr { display: block; border-top: 1px solid var(--line); padding: .4rem 0; }
  .data th, .data td { display: block; border: 0; padding: 0; }
  .data th { font-weight: 600; }
  .data td:empty { display: none; }
  .data td::before { content: attr(data-heading) ": "; opacity: .75; }
  .listing tr > :first-child { width: 2.5rem; padding-right: .5rem; }
}
@media print { body { max-width: none; padding: 0; font-size: 10pt; } a { color: inherit; } }
</style>
<title>)";

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Base64 (RFC 4648).
std::string Encoded(std::string_view bytes) {
  std::string text;
  text.reserve(4 * (bytes.size() / 3 + 1));
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view three = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k)
      bits = bits << 8 | (k < three.size() ? static_cast<unsigned char>(three[k]) : 0U);
    for (std::size_t k = 0; k < 4; ++k)
      text += k <= three.size() ? kDigits[bits >> (18 - 6 * k) & 0x3F] : '=';
  }
  return text;
}

}  // namespace

std::string MarkupEscaped(std::string_view text) {
  constexpr std::string_view kMarkup = "&<>\"'";
  constexpr const char* kNames[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};
  std::string escaped;
  for (const char each : text) {
    const std::size_t place = kMarkup.find(each);
    if (place == kMarkup.npos)
      escaped += each;
    else
      escaped += kNames[place];
  }
  return escaped;
}

std::string HtmlEscaped(std::string_view text) {
  return MarkupEscaped(platform::Visible(text));
}

HtmlPage::HtmlPage(const std::string& title)
    : m_html(kHead + HtmlEscaped(title) + "</title>\n</head>\n<body>\n<main>\n<h1>" +
             HtmlEscaped(title) + "</h1>\n") {}

void HtmlPage::Heading(const std::string& text) {
  m_html += "<h2>" + HtmlEscaped(text) + "</h2>\n";
}

void HtmlPage::Paragraph(const std::string& text) {
  m_html += "<p>" + HtmlEscaped(text) + "</p>\n";
}

void HtmlPage::Verdict(const std::string& text, bool isGood) {
  m_html += std::string("<p class=\"verdict ") + (isGood ? "good" : "bad") + "\">" +
            HtmlEscaped(text) + "</p>\n";
}

void HtmlPage::Table(const std::string& caption,
                     const std::vector<std::vector<std::string>>& rows) {
  m_html += "<table class=\"data\">\n<caption>" + HtmlEscaped(caption) + "</caption>\n<thead><tr>";
  for (const std::string& heading : rows.front()) Cell("th scope=\"col\"", heading);
  m_html += "</tr></thead>\n<tbody>\n";
  for (std::size_t row = 1; row < rows.size(); ++row) {
    m_html += "<tr>";
    for (std::size_t i = 0; i < rows[row].size(); ++i)
      Cell(i == 0 ? "th scope=\"row\"" : "td data-heading=\"" + HtmlEscaped(rows.front()[i]) + "\"",
           rows[row][i]);
    m_html += "</tr>\n";
  }
  m_html += "</tbody>\n</table>\n";
}

void HtmlPage::Listing(const std::string& caption, const std::vector<TextLine>& lines) {
  m_html += "<table class=\"listing\">\n<caption>" + HtmlEscaped(caption) +
            "</caption>\n<thead><tr><th scope=\"col\">Line</th><th scope=\"col\">Text</th></tr>"
            "</thead>\n<tbody>\n";
  for (const TextLine& line : lines) {
    m_html += "<tr><th scope=\"row\">" + std::to_string(line.number) + "</th><td>" +
              HtmlEscaped(line.text);
    for (const std::string& remark : line.remarks)
      m_html += "<span class=\"remark\">" + HtmlEscaped(remark) + "</span>";
    m_html += "</td></tr>\n";
  }
  m_html += "</tbody>\n</table>\n";
}

void HtmlPage::Picture(const std::string& svg, const std::string& caption,
                       const std::string& alternative) {
  m_html += "<figure>\n<img src=\"data:image/svg+xml;base64," + Encoded(svg) + "\" alt=\"" +
            HtmlEscaped(alternative) + "\">\n<figcaption>" + HtmlEscaped(caption) +
            "</figcaption>\n</figure>\n";
}

std::string HtmlPage::Finish() {
  return std::move(m_html) + "</main>\n</body>\n</html>\n";
}

void HtmlPage::Cell(const std::string& tag, const std::string& text) {
  m_html += "<" + tag + ">" + HtmlEscaped(text) + "</" + tag.substr(0, 2) + ">";
}

}  // namespace app
