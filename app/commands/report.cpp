// One page for a change ticket: the machine, the policy and its findings, its pages as pictures,
// what it changes, and whether the delivered policy is in force.

#include <algorithm>
#include <ctime>
#include <iostream>
#include <map>

#include "app/commands/command_line.h"
#include "app/commands/doctor.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/page/page.h"
#include "app/rehearsal/compare.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "app/text/html.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {
namespace {

struct Options {
  std::string file;  ///< Empty: the delivered policy.
  int policyId = 1;
  std::string output;
};

/// The delivered policy, or why there is none to compare with.
struct Delivered {
  std::optional<PolicySource> source;
  std::string missing = {};
};

Delivered FindDelivered() try { return {ReadPolicySource("")}; } catch (const UsageError& error) {
  return {std::nullopt, error.what()};
}

/// `review` is that of the delivered policy.
void AddForce(HtmlPage& page, const Delivered& delivered, const Review& review, bool isOther) {
  page.Heading("In force");
  if (!delivered.source) {
    page.Verdict("Cannot be told: there is no delivered policy to compare with.", false);
    page.Paragraph(delivered.missing);
    return;
  }
  const Force force = ForceOf(review);
  page.Verdict((isOther ? "The policy of this page is not the delivered one. " : "") +
                   ("The delivered policy is " + Sentence(force) + "."),
               force.IsIn() && !isOther);
  page.Paragraph(delivered.source->name + ", SHA-256 " + ChecksumOf(delivered.source->text));
  if (!force.differences.empty()) page.Table("Differences", RowsOf(force));
}

/// Where, when and with what the page was made.
std::string OriginOf(const Json& diagnosis) {
  const std::time_t now = std::time(nullptr);
  char time[32] = {};
  std::strftime(time, sizeof time, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
  return "Machine " + diagnosis["machine"].get<std::string>() + ", on the host " + HostName() +
         ". Made at " + time + " by sigilctl " + kVersion + ".";
}

/// The lines of the text, of a long one only those near a remark.
std::vector<HtmlPage::TextLine> LinesOf(const std::string& text, const Review& review) {
  constexpr long kMostLines = 1000, kNear = 3;
  std::map<long, std::vector<std::string>> remarks;
  for (const Finding& finding : review.findings.Kept())
    if (finding.line > 0) remarks[finding.line].push_back(Remark(finding));
  std::vector<HtmlPage::TextLine> lines;
  std::istringstream stream(text);
  long number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    const auto next = remarks.lower_bound(number - kNear);
    const bool isNear = next != remarks.end() && next->first <= number + kNear;
    if (number > kMostLines && !isNear) continue;
    if (line.ends_with('\r')) line.pop_back();
    lines.push_back({number, line, remarks[number]});
  }
  return lines;
}

void AddPolicy(HtmlPage& page, const PolicySource& source, const Review& review) {
  page.Heading("The policy");
  const std::size_t findings = review.findings.Count();
  page.Verdict(findings == 0 ? "Nothing found." : Counted(findings, "finding", "findings") + ".",
               findings == 0);
  page.Paragraph(source.name + ", policy " + std::to_string(review.policyId) + ", SHA-256 " +
                 ChecksumOf(source.text));
  if (findings == 0) return;
  std::vector<Row> rows = {{"Line", "Finding"}};
  for (const Finding& finding : review.findings.Kept())
    rows.push_back({finding.line > 0 ? std::to_string(finding.line) : "", Remark(finding)});
  page.Table("Findings", rows);
}

/// What the default entry holds after an update.
void AddMarks(HtmlPage& page, const Review& review) {
  std::vector<Row> rows = {{"Element", "Text", "Size", "Place", "Opacity"}};
  for (const ElementFate& element : review.elements) {
    if (!element.mark) continue;
    const peers::WatermarkRecord& mark = *element.mark;
    rows.push_back({element.id, mark.text,
                    mark.fit ? "fitted" : Shown("fontSize", mark.fontSize) + " pt",
                    PositionText(mark.printPos), std::to_string(mark.opacity) + " %"});
  }
  if (rows.size() > 1) page.Table("Watermarks of the default entry", rows);
}

/// Entries that print alike share a picture.
void AddPictures(HtmlPage& page, const peers::SettingFileContent& records) {
  page.Heading("The page of each entry");
  struct Picture {
    page::Page page;
    std::vector<std::string> entries;
  };
  std::vector<Picture> pictures;
  std::map<std::vector<peers::WatermarkRecord>, std::size_t> places;
  for (const peers::EntryRecord& entry : records.entries) {
    page::Page laid = page::LayOut(entry, page::FindPaper("A4", false), page::MeasureText);
    std::vector<peers::WatermarkRecord> marks;
    for (const page::Mark& mark : laid.marks) marks.emplace_back(mark.record).id.clear();
    const auto [place, isNew] = places.insert({std::move(marks), pictures.size()});
    if (isNew) pictures.push_back({std::move(laid), {}});
    pictures[place->second].entries.push_back(EntryName(entry.printer));
  }
  for (const auto& [laid, entries] : pictures) {
    std::string texts;
    for (const page::Mark& mark : laid.marks)
      texts += (texts.empty() ? "" : "; ") + mark.record.text + ", " +
               PositionText(mark.record.printPos);
    page.Picture(page::Draw(laid, {}, page::Format::kSvg), Listed(entries, " and ") + " on A4",
                 texts.empty() ? "A page without a watermark" : "A page with " + texts);
    for (const page::Note& note : laid.notes)
      page.Paragraph((note.watermark.empty() ? "" : note.watermark + " ") + note.text);
  }
  page.Paragraph(std::string(page::kMeaning[0]));
}

/// What the policy changes against the delivered one, when it is another.
void AddChanges(HtmlPage& page, const Delivered& delivered, const Review& before,
                const Review& review) {
  page.Heading("Changes against the delivered policy");
  if (!delivered.source) {
    page.Paragraph("There is no delivered policy to compare with.");
    return;
  }
  const auto differences = Compare(before, review);
  if (differences.empty())
    page.Paragraph("None.");
  else
    page.Table("Changes",
               RowsOf(differences, review.records.entries.size(), "Delivered", "This policy"));
}

std::string PageOf(const Options& options) {
  const PolicySource source = ReadPolicySource(options.file);
  const Delivered delivered = FindDelivered();
  const Review review = ReviewPolicy({source.text, options.policyId});
  const bool isOther = delivered.source && delivered.source->text != source.text;
  const Review before = isOther ? ReviewPolicy({delivered.source->text, options.policyId}) : review;
  const Json diagnosis = Diagnose();
  HtmlPage page("Watermark policy report");
  page.Paragraph(OriginOf(diagnosis));
  AddForce(page, delivered, before, isOther);
  if (!review.refusal.empty() || !review.failure.empty()) {
    page.Heading("The policy");
    page.Verdict("Refused: " + review.refusal + review.failure, false);
  } else {
    AddPolicy(page, source, review);
    AddMarks(page, review);
    AddPictures(page, review.records);
    if (isOther || !delivered.source) AddChanges(page, delivered, before, review);
  }
  page.Heading("The machine");
  page.Table("Its parts", RowsOf(diagnosis, "parts"));
  if (!diagnosis["printers"].is_null()) page.Table("Printers", RowsOf(diagnosis, "printers"));
  page.Table("What an export would give now", RowsOf(diagnosis, "forecast"));
  if (!diagnosis["unread"].empty())
    page.Table("Lines of machine.ini that are not read", RowsOf(diagnosis, "unread"));
  page.Heading("The policy's text");
  page.Listing("Each finding stands below its line",
               LinesOf(platform::ToUtf8(source.text), review));
  page.Heading("Signatures");
  page.Table(
      "To be signed on paper",
      {{"Role", "Name", "Date", "Signature"}, {"Author", "", "", ""}, {"Approval", "", "", ""}});
  return page.Finish();
}

int MakeReport(const Options& options) {
  const std::string page = PageOf(options);
  if (WriteOrPrint(options.output, page))
    std::cout << "report: " << page.size() << " bytes in " << platform::Visible(options.output)
              << ".\n";
  return 0;
}

}  // namespace

void AddReport(CommandLine& line) {
  auto [command, options] =
      line.Add("report", "Makes a page to look at and to sign, for a browser", MakeReport);
  AddPolicySource(command, options.file);
  AddOutput(command, options.output, "PAGE", "The page, an HTML file; - is standard output")
      ->required();
  AddPolicyId(command, options.policyId);
}

}  // namespace app
