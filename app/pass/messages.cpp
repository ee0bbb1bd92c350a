#include "app/pass/messages.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>
#include <span>
#include <utility>

#include "app/machine/home.h"

namespace app {
namespace {

constexpr char kDoctor[] = "`sigilctl doctor` tells the state of each part.";
constexpr char kAgain[] = "Run the command again when the other process is done.";
constexpr char kReport[] = "Keep the log and report it.";
constexpr char kPipe[] = "Start the control service; then run the command again.";
constexpr char kMendPolicy[] =
    "The exclude list and the printers' own entries are cleared; mend the file and run update "
    "again.";

struct Wording {
  std::initializer_list<int> numbers;  ///< The messages that mean the same.
  const char* sentence;
  const char* next = "";
};

// By the first number. A message's own text, as a printer's name, stands behind the sentence.
constexpr Wording kFailures[] = {
    {{100907}, "the setting file's mutex could not be made", kMendMutex},
    {{100908},
     "the setting file's mutex could not be taken: another process kept it, or died with it",
     kAgain},
    {{153000020}, "switching the watermarks off failed"},
    {{153000050}, "switching the watermarks on failed"},
    {{153000080}, "the policy could not be applied"},
    {{153000110}, "switching the watermarks off for the service failed"},
    {{153000140}, "switching the content log failed"},
    {{153000160}, "rebuilding the exclude list failed"},
    {{153000280, 153000300}, "SystemSetting.csv could not be read", kDoctor},
    {{153100010, 153100030, 153100040}, "the printers could not be listed", kMendPrinters},
    {{153100050, 153100120, 153100520, 153400010},
     "the Settings component could not be had",
     kDoctor},
    {{153100090}, "a printer could not be switched", kDoctor},
    {{153100100}, "the switching broke off", kReport},
    {{153100110}, "there is no scope to go by, or no list of printers", kDoctor},
    {{153100160}, "the update broke off", kReport},
    {{153100170}, "the policy is refused", kMendPolicy},
    {{153100180}, "an entry's last setting could not be had", kDoctor},
    {{153100190}, "an entry could not be rebuilt to its end", kReport},
    {{153100250, 153100290}, "an element was dropped: there is no entry for it", kReport},
    {{153100260, 153100300}, "an element was dropped: its watermark could not be made", kReport},
    {{153100470}, "an entry's old watermarks could not be deleted", kReport},
    {{153100480}, "an element was dropped: its registration broke off", kReport},
    {{153100530}, "switching the content log broke off", kReport},
    {{153100540}, "the delivered policy is refused", kDoctor},
    {{153100560}, "the delivered policy could not be deciphered", kDoctor},
    {{153100570}, "there is no delivered policy", kDoctor},
    {{153100580}, "the default entry could not be had", kDoctor},
    {{153100590}, "a printer's entry could not be had", kDoctor},
    {{153100600}, "the registration broke off", kReport},
    {{153100630}, "the policy's elements could not be registered"},
    {{153100650}, "SystemSetting.csv could not be opened", kDoctor},
    {{153100670}, "reading SystemSetting.csv broke off", kDoctor},
    {{153100750}, "the printers or the Settings component could not be had", kDoctor},
    {{153100800}, "rebuilding the exclude list broke off", kReport},
    {{153100830, 153100840, 153100850, 153100860},
     "the turn on the setting file could not be had",
     kAgain},
    {{153400040}, "an entry could not be had to switch it on", kDoctor},
    {{153400050}, "an entry's last setting could not be had to switch it on", kDoctor},
    {{153400080}, "an entry could not be had to switch it off or clear it", kDoctor},
    {{153400090}, "an entry's last setting could not be had to switch it off", kDoctor},
    {{153400160}, "an entry could not be had", kDoctor},
    {{153400210}, "a printer's old setting could not be deleted", kDoctor},
    {{153400230}, "a driver's old setting could not be deleted", kDoctor},
    {{153400250}, "the setting file's path is unknown", kDoctor},
    {{153400260}, "deleting the printers' old settings broke off", kReport},
};
constexpr Wording kUnsaved[] = {
    {{153400030}, "the setting file could not be saved"},
    {{153400070}, "an entry switched on could not be saved"},
    {{153400110}, "an entry switched off or cleared could not be saved"},
    {{153400130}, "the emptied exclude list could not be saved"},
};
constexpr Wording kWarnings[] = {
    {{152100040}, "SystemSetting.csv has an empty row, where reading ends"},
    {{153000081}, "the login name stands in for the user's full name", kMendAccount},
    {{153100230},
     "an element was dropped: its Kind stands for nothing that is registered",
     "Mend its Kind or take it off the policy's list."},
    {{153100240, 153100280},
     "an element was dropped: the policy lists it without an ID",
     "Give the list's entry an ID or take it out."},
    {{153100320, 153100330}, "Client.ini names no delivery folder; the default one is used"},
    {{153100340}, "the delivery folder that Client.ini names is none; the default one is used"},
    {{153100350, 153100360}, "the user's full name could not be looked up", kMendAccount},
    {{153100370}, "no domain controller answered for the user's full name", kMendAccount},
    {{153100380, 153100908}, "the look-up of the user's full name broke off", kMendAccount},
    {{153100410}, "the control service was not told: no security descriptor", kReport},
    {{153100420}, "the control service was not told: nobody serves its pipe", kPipe},
    {{153100430}, "the control service was not told: its pipe took no message", kPipe},
    {{153100440}, "the control service's pipe could not be closed", kReport},
    {{153100490}, "the look-up of the delivery folder broke off", kDoctor},
    {{153100510}, "telling the control service broke off", kReport},
    {{153100680}, "the control service was not told: no message", kReport},
    {{153100720}, "the user's full name is empty", kMendAccount},
    {{153100901}, "the user's full name was not found; the login name is used", kMendAccount},
    {{153100904}, "the folder of the user information is unknown", kDoctor},
    {{153100907, 153100951},
     "the Settings component could not be had for the user information",
     kDoctor},
    {{153100950}, "the user information could not be read", kDoctor},
    {{153100952}, "the user information could not be reset", kDoctor},
    {{153400302, 153400303}, "the setting folder's path is unknown", kDoctor},
};

constexpr int kPlaceReached = 99999999;  // which the library gives the level of a warning
constexpr int kMutexMissed = 100908;
constexpr int kEntryEmptied = 153100200;
constexpr int kEntryNotEmptied = 153100470;
constexpr int kDropped[] = {153100230, 153100240, 153100250, 153100260,
                            153100280, 153100290, 153100300, 153100480};
constexpr int kFirstUnread = 153200100;
constexpr int kLastUnread = 153200190;
constexpr int kHeaderFooterMade = 153100270;
constexpr int kStampMade = 153100310;
constexpr int kNoScope = 153100110;
constexpr int kPolicyRefused = 153100540;
constexpr int kPrinterChecked = 153100760;
constexpr int kPrinterExcluded = 153400150;
constexpr int kSwitchedOn = 153400060;
constexpr int kSwitchedOff = 153400100;  // also that an entry is cleared, which the function tells
constexpr std::string_view kClears = "OperationSigilSettings::ClearWatermark";

// "...　ElementID：ID → GUID：GUID"
constexpr std::string_view kBeforeGuid = " → GUID：";
constexpr std::size_t kGuidLength = 36;

}  // namespace

Meaning MeaningOf(const Message& message) {
  using Table = std::pair<Weight, std::span<const Wording>>;
  for (const auto& [weight, rows] :
       {Table(Weight::kFailure, kFailures), Table(Weight::kUnsaved, kUnsaved),
        Table(Weight::kWarning, kWarnings)})
    for (const Wording& row : rows)
      if (std::ranges::find(row.numbers, message.number) != row.numbers.end())
        return {weight, row.sentence, row.next};
  return {message.number == kPlaceReached ? Weight::kTrace : Weight::kWarning, message.text, ""};
}

std::vector<Message> Troubles(const std::vector<Message>& messages) {
  std::vector<Message> troubles;
  std::set<std::pair<int, std::string>> seen;
  for (const Message& message : messages)
    if (message.level >= kTroubleLevel && MeaningOf(message).weight != Weight::kTrace &&
        seen.emplace(message.number, message.function + message.text).second)
      troubles.push_back(message);
  return troubles;
}

Meaning FirstFailure(const std::vector<Message>& messages) {
  for (const Message& message : Troubles(messages))
    if (const Meaning meaning = MeaningOf(message); meaning.weight != Weight::kWarning)
      return meaning;
  return {Weight::kFailure, "the log tells where", ""};
}

std::optional<MadeMark> MadeMarkIn(const Message& message) {
  if (message.number != kHeaderFooterMade && message.number != kStampMade) return std::nullopt;
  const std::string& text = message.text;
  const std::size_t guid = text.size() - std::min(text.size(), kGuidLength);
  if (!std::string_view(text).substr(0, guid).ends_with(kBeforeGuid)) return std::nullopt;
  return MadeMark{text.substr(guid), message.number == kStampMade};
}

Step StepOf(const Message& message) {
  if (message.number == kEntryEmptied || message.number == kEntryNotEmptied) return Step::kEntry;
  if (MadeMarkIn(message)) return Step::kMade;
  if (std::ranges::find(kDropped, message.number) != std::end(kDropped)) return Step::kDropped;
  return message.number >= kFirstUnread && message.number <= kLastUnread ? Step::kUnread
                                                                         : Step::kOther;
}

bool MissesMutex(const Message& message) {
  return message.number == kMutexMissed;
}

bool RefusesDelivery(const Message& message) {
  // The reader's results -101 and -102 are faults of the machine, not of the text.
  const bool isMachines = message.text.ends_with("-101") || message.text.ends_with("-102");
  return message.number == kNoScope || (message.number == kPolicyRefused && !isMachines);
}

std::string MeaningOfNoScope() {
  return MeaningOf({.level = 0, .number = kNoScope, .function = "", .text = ""}).sentence;
}

WorkDone WorkDoneIn(const Outcome& outcome) {
  WorkDone done;
  for (const Message& message : outcome.messages) {
    if (message.number == kEntryEmptied) ++done.entries;
    if (MadeMarkIn(message)) ++done.marks;
    if (message.number == kPrinterChecked) ++done.checked;
    if (message.number == kPrinterExcluded) ++done.excluded;
    if (message.number == kSwitchedOn) ++done.on;
    if (message.number == kSwitchedOff && message.function != kClears) ++done.off;
  }
  return done;
}

}  // namespace app
