// What the desk takes for a hostile policy: each family repeats one thing up to the bounds.
//
// A process may take 500 MB, and a minute of the processor, which is many times what any family
// needs: work that grew with the square of the text would take longer.

#include <sys/resource.h>
#include <sys/wait.h>

#include "tests/app/desk.h"

namespace tests {
namespace {

constexpr rlim_t kMostSeconds = 60;
constexpr long kMostKilobytes = 500 * 1024;

struct Family {
  const char* name;
  const char* place;  ///< The repeated text stands before this.
  const char* text;   ///< With "#" for the number of the repetition.
  std::size_t count;
  const char* answer;  ///< In the first line.
};

// Texts beyond the bounds are refused; all others are told of.
const Family kFamilies[] = {
    {"Elements", "</Elements>", "<Element ID='#'/>", 120'000, "120000 findings"},
    {"Ids", "</ElementIDs>", "<ID>0</ID>", 4'000, "4001 of 4001 elements"},
    {"MissingIds", "</ElementIDs>", "<ID>x#</ID>", 4'000, "4001 of 4001 elements"},
    {"DroppedElements", "</ElementIDs>", "<ID/>", 30'000, "1 of 30001 elements"},
    {"EqualProperties", "</Element>", "<Name>a</Name>", 240'000, "239999 findings"},
    {"OtherProperties", "</Element>", "<q/>", 400'000, "400000 findings"},
    {"NodesOfOneId", "</Elements>", "<Element ID='0'><Bold>1</Bold></Element>", 60'000, "finding"},
    {"Strangers", "</Elements>", "<Elemnt/>", 400'000, "400000 findings"},
    {"InsideText", "</Text>", "<a/>", 400'000, "nothing found"},
    {"Attributes", "</Elements>", "<Elemnt a='' b='' c='' d=''/>", 90'000, "findings"},
    {"Scopes", "<ElementIDs>", "<PrinterScope>1</PrinterScope>", 200'000, "findings"},
    {"Policies", "</PolicyInfos>", "<PolicyInfo ID='#'/>", 120'000, "finding"},
    {"Lists", "</PolicyInfos>",
     "<PolicyInfo ID='x'><ElementIDs><ID>#</ID></ElementIDs></PolicyInfo>", 60'000,
     "nothing found"},
    {"Braces", "</Text>", "{a{", 4'000'000, "3 findings"},
    {"Placeholders", "</Text>", "{a#}", 1'500'000, "4 findings"},
    {"Users", "</Text>", "{WinUser}", 20'000, "finding"},
    {"LongText", "</Text>", "xxxxxxxxxx", 1'600'000, "finding"},
    {"TooManyIds", "</ElementIDs>", "<ID>0</ID>", 40'000, "too large"},
    {"TooManyQuotedIds", "</ElementIDs>", "<ID>q\"#</ID>", 20'001, "too large"},
    {"TooManyUsers", "</Text>", "{WinUser}", 1'000'000, "too large"},
    {"TooManyNodes", "</Text>", "<a/>", 4'000'000, "too large"},
};

class Growth : public testing::TestWithParam<Family> {};

TEST_P(Growth, StaysBounded) {
  const Family& family = GetParam();
  std::string text = Policy({"<Text>t</Text><Opacity>9</Opacity>"}), repeated;
  for (std::size_t i = 0; i < family.count; ++i) {
    const std::string_view unit = family.text;
    const std::size_t number = std::min(unit.find('#'), unit.size());
    repeated += unit.substr(0, number);
    if (number < unit.size()) repeated += std::to_string(i + 1);
    repeated += unit.substr(std::min(number + 1, unit.size()));
  }
  text.insert(text.find(family.place), repeated);
  const Desk desk;
  desk.Write(text);
  rlimit before = {};
  getrlimit(RLIMIT_CPU, &before);
  const rlimit soft = {kMostSeconds, before.rlim_max};
  setrlimit(RLIMIT_CPU, &soft);
  const std::string answer = desk.Answer("check policy.xml 2>&1 | head -n 1");
  setrlimit(RLIMIT_CPU, &before);
  EXPECT_NE(answer.find(family.answer), std::string::npos) << answer;
  rusage used = {};
  getrusage(RUSAGE_CHILDREN, &used);
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LT(used.ru_maxrss, kMostKilobytes);
#endif
}

INSTANTIATE_TEST_SUITE_P(Families, Growth, testing::ValuesIn(kFamilies),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace tests
