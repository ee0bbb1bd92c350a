#include "app/commands/preview.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <system_error>
#include <vector>

#include "app/machine/output_file.h"
#include "app/page/draw.h"
#include "app/page/layout.h"
#include "app/page/set_text.h"
#include "app/text/table.h"
#include "app/text/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr std::size_t kNameWidth = 60;
constexpr std::size_t kNoteWidth = 160;
constexpr std::size_t kMostNotes = 12;

page::Format FormatOf(const std::filesystem::path& picture) {
  const std::string extension = picture.extension().string();
  if (extension == ".svg") return page::Format::kSvg;
  if (extension == ".pdf") return page::Format::kPdf;
  if (extension == ".png") return page::Format::kPng;
  throw UsageError(picture.string() + ": a picture's name ends in .svg, .pdf or .png");
}

page::Paper PaperOf(const PreviewOptions& options) {
  auto paper = page::FindPaper(options.paper, options.isLandscape);
  if (!paper) throw UsageError("--paper: A3, A4 or Letter, not '" + options.paper + "'");
  return std::move(*paper);
}

const peers::EntryRecord* Find(const peers::SettingFileContent& content, std::string_view printer) {
  const auto found =
      std::find_if(content.entries.begin(), content.entries.end(),
                   [&](const peers::EntryRecord& entry) { return entry.printer == printer; });
  return found == content.entries.end() ? nullptr : &*found;
}

bool IsExcluded(const peers::SettingFileContent& content, const std::string& printer) {
  return std::any_of(content.excluded.begin(), content.excluded.end(),
                     [&](const peers::ExcludeRecord& record) { return record.name == printer; });
}

bool IsPrinter(const std::string& name) {
  const auto printers = platform::LoadMachine().printers;
  return std::any_of(printers.begin(), printers.end(), [&](const platform::Printer& printer) {
    return platform::ToUtf8(printer.name) == name;
  });
}

/// What a printer prints by: its own entry, else, unless it is excluded, the default one.
const peers::EntryRecord& EntryOf(const peers::SettingFileContent& content,
                                  const std::string& printer) {
  if (const auto* const own = Find(content, printer)) return *own;
  if (IsExcluded(content, printer))
    throw UsageError("'" + printer + "' is on the exclude list and prints without watermarks");
  if (printer != "*" && !IsPrinter(printer))
    throw UsageError("--printer: there is no printer '" + printer + "'");
  if (const auto* const standard = Find(content, "*")) return *standard;
  throw UsageError("no policy has been applied yet, so there is nothing to draw");
}

/// Where the watermarks are on, when they are off in the entry that is drawn.
std::vector<page::Note> Elsewhere(const peers::SettingFileContent& content,
                                  const peers::EntryRecord& entry) {
  constexpr std::size_t kMost = 4;
  std::vector<std::string> names;
  for (const peers::EntryRecord& each : content.entries)
    if (!entry.lastSetting.enabled && each.lastSetting.enabled)
      names.push_back(OneLine(each.printer, kNameWidth));
  if (names.empty()) return {};
  return {{"", "they are on for " + NamesInARow(names, kMost) + "; try --printer NAME"}};
}

/// One line for each, as far as they are worth reading; those on the whole page come first.
std::vector<std::string> Lines(std::vector<page::Note> notes) {
  std::stable_partition(notes.begin(), notes.end(),
                        [](const page::Note& note) { return note.watermark.empty(); });
  std::vector<std::string> lines;
  for (const page::Note& note : notes) {
    if (lines.size() == kMostNotes) {
      lines.push_back("and " + std::to_string(notes.size() - kMostNotes) + " notes more");
      break;
    }
    const std::string name =
        note.watermark.empty() ? "" : OneLine(note.watermark, kNameWidth) + " ";
    lines.push_back(name + OneLine(note.text, kNoteWidth));
  }
  return lines;
}

}  // namespace

void Preview(std::ostream& out, const peers::SettingFileContent& content,
             const PreviewOptions& options) {
  const page::Format format = FormatOf(options.picture);
  const page::Paper paper = PaperOf(options);
  const peers::EntryRecord& entry = EntryOf(content, options.printer);
  page::Page page = page::LayOut(entry, paper, page::MeasureText);
  const std::vector<page::Note> elsewhere = Elsewhere(content, entry);
  page.notes.insert(page.notes.end(), elsewhere.begin(), elsewhere.end());
  const std::vector<page::Note> fonts = page::FontNotes(page);
  page.notes.insert(page.notes.end(), fonts.begin(), fonts.end());

  const std::string subject =
      (entry.printer == "*" ? "the default entry" : OneLine(entry.printer, kNameWidth)) + " on " +
      paper.name + (options.isLandscape ? " landscape" : "");
  const std::string count = std::to_string(page.marks.size()) + " of " +
                            std::to_string(entry.watermarks.size()) + " watermarks";
  const std::vector<std::string> notes = Lines(page.notes);
  std::vector<std::string> caption = {count + " of " + subject};
  caption.insert(caption.end(), notes.begin(), notes.end());
  caption.emplace_back();
  caption.insert(caption.end(), std::begin(page::kMeaning), std::end(page::kMeaning));

  WriteOutput(options.picture, page::Draw(page, caption, format));
  out << "preview: " << options.picture.string() << " shows " << count << " of " << subject
      << ".\n";
  for (const std::string& note : notes) out << "  " << note << "\n";
}

}  // namespace app
