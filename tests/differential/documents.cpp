#include "tests/differential/documents.h"

#include <iterator>

namespace differential {
namespace {

using Text = std::wstring;

const wchar_t* const kIds[] = {L"1",   L"E1",  L"01",  L" 1 ", L"a b",        L"田中",
                               L"é",   L"a'b", L"a]b", L"a/b", L"//",         L"a|b",
                               L"*",   L".",   L"..",  L"@ID", L"$x",         L"a&b",
                               L"a<b", L"a>b", L"x:y", L"{1}", L"2147483648", L"\xD83D\xDE00"};

// These end the query's string, and some of them begin another one.
const wchar_t* const kHostileIds[] = {L"\"",
                                      L"a\"b",
                                      L"\"\"",
                                      L"\" or \"1\"=\"1",
                                      L"\"] | //ID[\"",
                                      L"\"]/Text | *[\"",
                                      L"x\"=\"x",
                                      L"\" or $v or \"",
                                      L"\"][1][\"1",
                                      L"\"]/..[\"1",
                                      L"\" or p:q or \"",
                                      L"\"]/@ID[\"1",
                                      L"\"]/Text/text()[\"1",
                                      L"\" or 1 div 0 or \"",
                                      L"\" or '"};

const wchar_t* const kChildren[] = {L"Kind", L"Name", L"Text", L"FontSize", L"Color", L"XOffset"};

const wchar_t* const kBlanks[] = {L" ",      L"  ",   L"\t",     L"\n",
                                  L" \n\t ", L"\xA0", L"\x3000", L"\x2028"};

const wchar_t* const kLineEnds[] = {L"\r\n", L"\r", L"\r\n\r\n", L" \r\n", L"\n\r"};

const wchar_t* const kWords[] = {L"社外秘", L"x",    L"{WinUser}", L"a b",
                                 L"1",      L"0xFF", L"10.5",      L"\xD83D\xDE00"};

const wchar_t* const kReferences[] = {L"&#32;",  L"&#10;",  L"&#13;",         L"&#160;",
                                      L"&#9; ",  L" &#32;", L"&lt;&amp;&gt;", L"&quot;&apos;",
                                      L"]]&gt;", L"田",     L"&#x7530;",      L"&#x1F600;"};

const wchar_t* const kInner[] = {L"<!-- c -->",
                                 L"<!---->",
                                 L"<?p d?>",
                                 L"<b>y</b>",
                                 L"<b> y </b>",
                                 L"<b/>",
                                 L"<b> </b>",
                                 L"<b><c> z</c></b>",
                                 L"<b>\n</b>\n<c>\n</c>",
                                 L"<b xml:space='preserve'> y </b>"};

const wchar_t* const kCData[] = {
    L"<![CDATA[x]]>",   L"<![CDATA[ x ]]>",          L"<![CDATA[]]>",
    L"<![CDATA[   ]]>", L"<![CDATA[<b>&amp;</b>]]>", L"<![CDATA[]]]]><![CDATA[>]]>",
    L"<![CDATA[\r\n]]>"};

const wchar_t* const kProlog[] = {L"<?xml version='1.0'?>",
                                  L"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n",
                                  L"<?xml version='1.0' encoding='UTF-16'?>",
                                  L"<?xml version='1.0' standalone='yes'?>",
                                  L"<?xml version='1.0' encoding='UTF-8' standalone='no'?>",
                                  L"\xFEFF",
                                  L"\xFEFF<?xml version='1.0'?>",
                                  L"<!-- c -->",
                                  L"<?p d?>",
                                  L" \n"};

const wchar_t* const kBadProlog[] = {L" <?xml version='1.0'?>",
                                     L"<?xml version='2.0'?>",
                                     L"<?xml encoding='utf-8'?>",
                                     L"<?xml version='1.0' encoding=''?>",
                                     L"<?xml version='1.0' standalone='maybe'?>",
                                     L"<?xml?>",
                                     L"<?xml version='1.0'?><?xml version='1.0'?>",
                                     L"x",
                                     L"&amp;",
                                     L"<![CDATA[x]]>"};

const wchar_t* const kEncodings[] = {L"Shift_JIS", L"iso-8859-1", L"euc-jp",      L"us-ascii",
                                     L"nonsense",  L"UCS-4",      L"windows-1252"};

const wchar_t* const kDoctypes[] = {
    L"<!DOCTYPE QuietMIMOSA>", L"<!DOCTYPE QuietMIMOSA [<!ENTITY e 'v'>]>",
    L"<!DOCTYPE QuietMIMOSA [<!ELEMENT HLE ANY>]>", L"<!DOCTYPE QuietMIMOSA SYSTEM 'nowhere.dtd'>",
    L"<!DOCTYPE x [<!ENTITY e SYSTEM 'C:\\e.txt'>]>"};

const wchar_t* const kRubbish[] = {L"<",
                                   L">",
                                   L"&",
                                   L"&x;",
                                   L"&#0;",
                                   L"&#xD800;",
                                   L"\"",
                                   L"<b>",
                                   L"</b>",
                                   L"]]>",
                                   L"<!--",
                                   L"<b a=1/>",
                                   L"<b a='1' a='2'/>",
                                   L"<1/>",
                                   L"\x1",
                                   L"\xFFFE",
                                   L"\xD800",
                                   L"\xDC00",
                                   L"<b/",
                                   L"<b a='<'/>",
                                   L"<!x>",
                                   L"&#x110000;",
                                   L"<?xml version='1.0'?>",
                                   L"<b a/>",
                                   L"-->"};

const wchar_t* const kNames[] = {
    L"<p:b>x</p:b>",       L"<b p:a='1'/>",
    L"<b:c:d/>",           L"<b :a='1'/>",
    L"<b xmlns:p=''/>",    L"<xmlns:b/>",
    L"<b xmlns:xml='u'/>", L"<b xmlns:p='u' xmlns:q='u' p:a='1' q:a='2'/>"};

Text Repeated(const Text& text, std::size_t count) {
  Text all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

Text Escaped(const Text& text) {
  Text escaped;
  for (const wchar_t unit : text) {
    switch (unit) {
      case L'<':
        escaped += L"&lt;";
        break;
      case L'&':
        escaped += L"&amp;";
        break;
      case L'"':
        escaped += L"&quot;";
        break;
      default:
        escaped += unit;
    }
  }
  return escaped;
}

/// Everything that a kind of document can change.
struct Plan {
  Text before, after, outerAttributes, innerAttributes, afterRoot, wrapOpen, wrapClose;
  bool blanks = false, inner = false, cdata = false, numbers = false, nested = false;
  bool hostile = false, twins = false, references = false, lineEnds = false;
  Text spaceAttribute, firstId, versionName = L"Version";
};

Text Content(Dice& dice, const Plan& plan) {
  if (plan.numbers) return Escaped(MakeNumber(dice));
  Text text;
  for (std::size_t i = 0, parts = 1 + dice.Below(3); i < parts; ++i) {
    if (plan.blanks && !dice.OneIn(3)) text += dice.Of(kBlanks);
    if (plan.lineEnds && dice.OneIn(2)) text += dice.Of(kLineEnds);
    if (plan.inner && dice.OneIn(2)) text += dice.Of(kInner);
    if (plan.cdata && dice.OneIn(2)) text += dice.Of(kCData);
    if (plan.references && dice.OneIn(2)) text += dice.Of(kReferences);
    if (!dice.OneIn(4)) text += dice.Of(kWords);
    if (plan.blanks && dice.OneIn(2)) text += dice.Of(kBlanks);
  }
  return text;
}

Text Node(Dice& dice, const Plan& plan, const Text& name) {
  return L"<" + name + plan.spaceAttribute + L">" + Content(dice, plan) + L"</" + name + L">";
}

Text PolicyNodes(Dice& dice, const Plan& plan, const std::vector<Text>& ids) {
  const wchar_t* const policies[] = {L"1", L"1", L"2", L"01", L"-1", L" 1", L"1 "};
  Text nodes;
  for (std::size_t i = 0, count = 1 + dice.Below(3); i < count; ++i) {
    nodes += L"<PolicyInfo ID='" + Text(i == 0 ? L"1" : dice.Of(policies)) + L"'><ElementIDs>";
    for (const Text& id : ids) nodes += L"<ID>" + Escaped(id) + L"</ID>";
    if (plan.blanks) nodes += L"\n<ID> " + Escaped(ids[0]) + L"\n</ID> ";
    nodes += L"</ElementIDs>";
    for (std::size_t twin = dice.Below(plan.twins ? 3 : 2); twin < 2; ++twin)
      nodes += Node(dice, plan, L"PrinterScope");
    nodes += L"</PolicyInfo>";
  }
  return nodes;
}

Text ElementNodes(Dice& dice, const Plan& plan, const std::vector<Text>& ids) {
  Text nodes;
  for (const Text& id : ids) {
    nodes += L"<Element ID=\"" + Escaped(id) + L"\">";
    for (const wchar_t* child : kChildren) {
      if (dice.OneIn(8)) continue;
      nodes += Node(dice, plan, child);
      if (plan.twins && dice.OneIn(3)) nodes += Node(dice, plan, child);
    }
    nodes += L"</Element>";
    if (plan.blanks) nodes += dice.Of(kBlanks);
  }
  return nodes;
}

Text Body(Dice& dice, const Plan& plan, const std::vector<Text>& ids) {
  const auto half = [&] {
    return L"<HLE " + plan.versionName + L"='1'" + plan.innerAttributes + L">" + plan.wrapOpen +
           L"<Watermark><PolicyInfos>" + PolicyNodes(dice, plan, ids) +
           L"</PolicyInfos><Elements>" + ElementNodes(dice, plan, ids) +
           L"</Elements></Watermark>" + plan.wrapClose + L"</HLE>";
  };
  Text body = half();
  if (plan.twins && dice.OneIn(2)) body += half();
  return body;
}

/// Cuts, doubles or replaces something anywhere.
Text Broken(Dice& dice, Text xml) {
  const std::size_t at = dice.Below(xml.size());
  switch (dice.Below(4)) {
    case 0:
      return xml.substr(0, at);
    case 1:
      return xml.erase(at, 1 + dice.Below(3));
    case 2:
      return xml.insert(at, xml, dice.Below(xml.size()), 1 + dice.Below(20));
    default:
      return xml.insert(at, dice.Of(kRubbish));
  }
}

struct Kind {
  const char* name;
  void (*apply)(Dice&, Plan&);
};

const Kind kKinds[] = {
    {"plain", [](Dice&, Plan&) {}},
    {"blanks", [](Dice&, Plan& plan) { plan.blanks = true; }},
    {"cdata", [](Dice&, Plan& plan) { plan.cdata = true; }},
    {"cdata-blanks", [](Dice&, Plan& plan) { plan.cdata = plan.blanks = true; }},
    {"nested", [](Dice&, Plan& plan) { plan.inner = true; }},
    {"nested-blanks", [](Dice&, Plan& plan) { plan.inner = plan.blanks = true; }},
    {"nested-all", [](Dice&, Plan& plan) { plan.inner = plan.cdata = plan.blanks = true; }},
    {"space",
     [](Dice& dice, Plan& plan) {
       plan.inner = plan.blanks = true;
       const wchar_t* const forms[] = {L" xml:space='preserve'", L" xml:space='default'",
                                       L" xml:space='other'"};
       (dice.OneIn(2) ? plan.spaceAttribute : plan.innerAttributes) = dice.Of(forms);
     }},
    {"references", [](Dice&, Plan& plan) { plan.references = true; }},
    {"references-blanks", [](Dice&, Plan& plan) { plan.references = plan.blanks = true; }},
    {"line-ends", [](Dice&, Plan& plan) { plan.lineEnds = true; }},
    {"numbers", [](Dice&, Plan& plan) { plan.numbers = true; }},
    {"hostile", [](Dice&, Plan& plan) { plan.hostile = true; }},
    {"unknown-function", [](Dice&, Plan& plan) { plan.firstId = L"\" and foo() and \""; }},
    {"twins", [](Dice&, Plan& plan) { plan.twins = true; }},
    {"prolog", [](Dice& dice, Plan& plan) { plan.before = dice.Of(kProlog); }},
    {"bad-prolog", [](Dice& dice, Plan& plan) { plan.before = dice.Of(kBadProlog); }},
    {"encoding",
     [](Dice& dice, Plan& plan) {
       plan.before = L"<?xml version='1.0' encoding='" + Text(dice.Of(kEncodings)) + L"'?>";
     }},
    {"version-1.1", [](Dice&, Plan& plan) { plan.before = L"<?xml version='1.1'?>"; }},
    {"doctype", [](Dice& dice, Plan& plan) { plan.before = dice.Of(kDoctypes); }},
    {"behind",
     [](Dice& dice, Plan& plan) {
       const wchar_t* const forms[] = {L" \n", L"<!-- c -->", L"<?p d?>", L"x", L"<b/>", L"</b>"};
       plan.after = dice.Of(forms);
     }},
    {"namespace",
     [](Dice& dice, Plan& plan) {
       (dice.OneIn(2) ? plan.outerAttributes : plan.innerAttributes) =
           dice.OneIn(3) ? L" xmlns='urn:u'" : L" xmlns:p='urn:u'";
     }},
    {"names", [](Dice& dice, Plan& plan) { plan.afterRoot = dice.Of(kNames); }},
    {"version",
     [](Dice& dice, Plan& plan) {
       const wchar_t* const forms[] = {L"version", L"VERSION", L"x", L"Versions"};
       plan.versionName = dice.Of(forms);
     }},
    {"deep",
     [](Dice& dice, Plan& plan) {
       const std::size_t depth = dice.OneIn(2) ? 20 + dice.Below(200) : 300 + dice.Below(300);
       plan.afterRoot = Repeated(L"<d>", depth) + Repeated(L"</d>", depth);
     }},
    {"wrapped",
     [](Dice&, Plan& plan) {
       plan.wrapOpen = L"<Other>";
       plan.wrapClose = L"</Other>";
     }},
    {"broken", nullptr},
};

}  // namespace

std::wstring MakeNumber(Dice& dice) {
  const wchar_t* const whole[] = {L"0",
                                  L"1",
                                  L"2",
                                  L"-1",
                                  L"007",
                                  L"255",
                                  L"2147483647",
                                  L"2147483648",
                                  L"-2147483648",
                                  L"-2147483649",
                                  L"4294967295",
                                  L"99999999999999999999",
                                  L"0x0",
                                  L"0xFF",
                                  L"0xFFFFFF",
                                  L"0XaB",
                                  L"0xFFFFFFFF",
                                  L"0x7FFFFFFF",
                                  L"0x",
                                  L"0xG",
                                  L"x1",
                                  L"１２",
                                  L"٣",
                                  L"+5",
                                  L"+-5",
                                  L"--5",
                                  L"- 5",
                                  L"1.5",
                                  L".5",
                                  L"5.",
                                  L".",
                                  L"1e3",
                                  L"1E-3",
                                  L"1d2",
                                  L"1e",
                                  L"1e+",
                                  L"1e400",
                                  L"-1e400",
                                  L"1e-400",
                                  L"inf",
                                  L"nan",
                                  L"0x1p3",
                                  L"1,5",
                                  L"10.5pt",
                                  L"4.9406564584124654e-324",
                                  L"2.2250738585072011e-308",
                                  L"9007199254740993",
                                  L"0.1",
                                  L"1.7976931348623158e308"};
  const wchar_t* const before[] = {L"", L"", L"", L" ", L"\t", L"\x3000", L"\xA0", L"+", L"-"};
  const wchar_t* const after[] = {L"", L"", L"", L" ", L"x", L"0", L".", L"9", L"e5", L"９"};
  std::wstring text = dice.Of(before);
  text += dice.Of(whole);
  text += dice.Of(after);
  if (dice.OneIn(20)) text = std::wstring(1 + dice.Below(400), L'9') + L"." + text;
  return text;
}

Document MakeDocument(unsigned number) {
  Dice dice(number);
  Plan plan;
  const Kind& kind = kKinds[number % std::size(kKinds)];
  if (kind.apply != nullptr) {
    kind.apply(dice, plan);
  } else if (dice.OneIn(2)) {
    plan.blanks = plan.inner = true;
  } else {
    plan.cdata = true;
  }
  Document document;
  document.kind = kind.name;
  for (std::size_t i = 0, count = 1 + dice.Below(3); i < count; ++i)
    document.elementIds.push_back(plan.hostile && !dice.OneIn(3) ? dice.Of(kHostileIds)
                                                                 : dice.Of(kIds));
  if (!plan.firstId.empty()) document.elementIds[0] = plan.firstId;
  document.xml = plan.before + L"<QuietMIMOSA" + plan.outerAttributes + L">" +
                 (plan.blanks ? L"\n  " : L"") + Body(dice, plan, document.elementIds) +
                 plan.afterRoot + L"</QuietMIMOSA>" + plan.after;
  if (kind.apply == nullptr) document.xml = Broken(dice, document.xml);
  return document;
}

}  // namespace differential
