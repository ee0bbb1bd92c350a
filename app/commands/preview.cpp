#include <algorithm>
#include <iostream>
#include <ranges>

#include "app/commands/command_line.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/page/page.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

constexpr std::size_t kNameWidth = 60;
constexpr std::size_t kNoteWidth = 160;
constexpr std::size_t kMostNotes = 12;

struct Options {
  std::string file;  ///< A policy; empty: the machine's records are drawn.
  int policyId = 1;
  std::string printer = "*";
  std::string paper = "A4";
  bool isLandscape = false;
  bool isPlain = false;  ///< The bare paper, to lay over a print.
  std::string picture;   ///< Its extension names the format.
};

page::Format FormatOf(const std::string& picture) {
  if (picture == kStandardStream) return page::Format::kSvg;
  if (const auto format = page::FormatOf(PathOf(picture).extension().string())) return *format;
  throw UsageError(picture + ": a picture's name ends in " + page::kPictures);
}

/// What a printer prints by: its own entry, else, unless it is excluded, the default one.
const peers::EntryRecord& EntryOf(const peers::SettingFileContent& content,
                                  const std::string& printer) {
  if (const auto* const own = FindEntry(content, printer)) return *own;
  if (IsExcluded(content, printer))
    throw UsageError("'" + printer + "' is on the exclude list and prints without watermarks");
  if (printer != "*") RequirePrinter(printer);
  if (const auto* const standard = FindEntry(content, "*")) return *standard;
  throw UsageError("no policy has been applied yet, so there is nothing to draw");
}

/// Adds where the watermarks are on, when they are off in the entry that is drawn.
void AddElsewhere(std::vector<page::Note>& notes, const peers::SettingFileContent& content,
                  const peers::EntryRecord& entry) {
  constexpr std::size_t kMost = 4;
  std::vector<std::string> names;
  for (const peers::EntryRecord& each : content.entries)
    if (!entry.lastSetting.enabled && each.lastSetting.enabled)
      names.push_back(OneLine(each.printer, kNameWidth));
  if (!names.empty())
    notes.push_back({"", "they are on for " + NamesInARow(names, kMost) + "; try --printer NAME"});
}

/// One line for each, as far as they are worth reading; those on the whole page come first.
std::vector<std::string> Lines(std::vector<page::Note> notes) {
  std::stable_partition(notes.begin(), notes.end(),
                        [](const page::Note& note) { return note.watermark.empty(); });
  std::vector<std::string> lines;
  for (const page::Note& note : notes | std::views::take(kMostNotes))
    lines.push_back((note.watermark.empty() ? "" : OneLine(note.watermark, kNameWidth) + " ") +
                    OneLine(note.text, kNoteWidth));
  if (notes.size() > kMostNotes)
    lines.push_back(AndMore(notes.size() - kMostNotes, "note", "notes"));
  return lines;
}

/// The records that are drawn, and their name in the caption.
struct Subject {
  peers::SettingFileContent records;
  std::string name;
};

Subject FindSubject(const Options& options) {
  if (options.file.empty() && !kReadsValues)
    throw UsageError(std::string("preview: a policy is needed. ") + kUnreadValues);
  if (options.file.empty()) return {ReadSettings(), "the records of " + OneLine(MachineName())};
  const PolicySource source = ReadPolicySource(options.file);
  Review review = ReviewSource(source, options.policyId);
  if (!review.emptied.empty()) throw UsageError(source.name + ": " + review.emptied);
  return {std::move(review.records), OneLine(source.name) + ", policy " +
                                         std::to_string(options.policyId) + ", SHA-256 " +
                                         ChecksumOf(source.text)};
}

/// Draws the page that a printer's watermarks make on empty paper. A picture that is there already
/// is replaced as a whole. Throws UsageError for a printer that is none or prints without
/// watermarks.
int Preview(const Options& options) {
  const page::Format format = FormatOf(options.picture);
  const page::Paper paper = page::FindPaper(options.paper, options.isLandscape);
  const Subject drawn = FindSubject(options);
  const peers::EntryRecord& entry = EntryOf(drawn.records, options.printer);
  page::Page page = page::LayOut(entry, paper, page::MeasureText);
  AddElsewhere(page.notes, drawn.records, entry);

  const std::string subject =
      (entry.printer == "*" ? "the default entry" : OneLine(entry.printer, kNameWidth)) + " on " +
      paper.name + (options.isLandscape ? " landscape" : "");
  const std::string count = std::to_string(page.marks.size()) + " of " +
                            std::to_string(entry.watermarks.size()) + " watermarks";
  const std::vector<std::string> notes = Lines(page.notes);
  std::vector<std::string> caption;
  if (!options.isPlain) {
    caption = {count + " of " + subject, drawn.name};
    caption.insert(caption.end(), notes.begin(), notes.end());
    caption.emplace_back();
    caption.insert(caption.end(), std::begin(page::kMeaning), std::end(page::kMeaning));
  }
  const std::string picture = page::Draw(page, caption, format);
  if (!WriteOrPrint(options.picture, picture)) return 0;
  std::cout << "preview: " << platform::Visible(options.picture) << " shows " << count << " of "
            << subject << ".\n";
  for (const std::string& note : notes) std::cout << "  " << note << "\n";
  return 0;
}

}  // namespace

void AddPreview(CommandLine& line) {
  auto [command, options] =
      line.Add("preview", "Draws the page with its watermarks as a picture", Preview);
  command.add_option("FILE", options.file, "A policy to try (else what the machine holds)")
      ->type_name("");
  AddPolicyId(command, options.policyId);
  command.add_option("--printer", options.printer, "Whose page (the default entry's)")
      ->type_name("NAME");
  command
      .add_option(
          "-o,--output", options.picture,
          std::string("The picture: a ") + page::kPictures + "; - is standard output, as SVG")
      ->type_name("PICTURE")
      ->required();
  AddPaper(command, options.paper, options.isLandscape);
  command.add_flag("--plain", options.isPlain, "The bare paper in its true size");
}

}  // namespace app
