#include "tests/differential/documents.h"

namespace differential {
namespace {

using Text = std::wstring;
using Texts = std::vector<Text>;

/// A list written as one text, its items parted by "¦".
Texts List(const Text& text) {
  Texts items;
  for (std::size_t begin = 0, end = 0; end != Text::npos; begin = end + 1) {
    end = text.find(L'¦', begin);
    items.push_back(text.substr(begin, end - begin));
  }
  return items;
}

const Texts kIds = List(
    L"1¦E1¦01¦ 1 ¦a b¦田中¦é¦a'b¦a]b¦a/b¦//¦a|b¦*¦.¦..¦@ID¦$x¦a&b¦a<b¦a>b¦x:y¦{1}¦2147483648¦"
    L"\xD83D\xDE00");

// These end the query's string, and some of them begin another one.
const Texts kHostileIds = List(
    LR"("¦a"b¦""¦" or "1"="1¦"] | //ID["¦"]/Text | *["¦x"="x¦" or $v or "¦"][1]["1¦"]/..["1¦)"
    LR"(" or p:q or "¦"]/@ID["1¦"]/Text/text()["1¦" or 1 div 0 or "¦" or '¦" and foo() and ")");

const Texts kChildren = List(L"Kind¦Name¦Text¦FontSize¦Color¦XOffset");

const Texts kBlanks = List(L" ¦  ¦\t¦\n¦ \n\t ¦\xA0¦\x3000¦\x2028");

const Texts kLineEnds = List(L"\r\n¦\r¦\r\n\r\n¦ \r\n¦\n\r");

const Texts kWords = List(L"社外秘¦x¦{WinUser}¦a b¦1¦0xFF¦10.5¦\xD83D\xDE00");

const Texts kReferences = List(
    L"&#32;¦&#10;¦&#13;¦&#160;¦&#9; ¦ &#32;¦&lt;&amp;&gt;¦&quot;&apos;¦]]&gt;¦田¦&#x7530;¦"
    L"&#x1F600;");

const Texts kInner = List(
    L"<!-- c -->¦<!---->¦<?p d?>¦<b>y</b>¦<b> y </b>¦<b/>¦<b> </b>¦<b><c> z</c></b>¦"
    L"<b>\n</b>\n<c>\n</c>¦<b xml:space='preserve'> y </b>");

const Texts kCData = List(
    L"<![CDATA[x]]>¦<![CDATA[ x ]]>¦<![CDATA[]]>¦<![CDATA[   ]]>¦<![CDATA[<b>&amp;</b>]]>¦"
    L"<![CDATA[]]]]><![CDATA[>]]>¦<![CDATA[\r\n]]>");

const Texts kProlog = List(
    L"<?xml version='1.0'?>¦<?xml version=\"1.0\" encoding=\"utf-8\"?>\n¦"
    L"<?xml version='1.0' encoding='UTF-16'?>¦<?xml version='1.0' standalone='yes'?>¦"
    L"<?xml version='1.0' encoding='UTF-8' standalone='no'?>¦\xFEFF¦"
    L"\xFEFF<?xml version='1.0'?>¦<!-- c -->¦<?p d?>¦ \n");

const Texts kMarks = List(L"\xFEFF\xFEFF¦\xFEFF\xFEFF<?xml version='1.0'?>");

const Texts kBadProlog = List(
    L" <?xml version='1.0'?>¦<?xml version='2.0'?>¦<?xml encoding='utf-8'?>¦"
    L"<?xml version='1.0' encoding=''?>¦<?xml version='1.0' standalone='maybe'?>¦<?xml?>¦"
    L"<?xml version='1.0'?><?xml version='1.0'?>¦x¦&amp;¦<![CDATA[x]]>");

const Texts kEncodings = List(L"Shift_JIS¦iso-8859-1¦euc-jp¦us-ascii¦nonsense¦UCS-4¦windows-1252");

const Texts kDoctypes = List(
    L"<!DOCTYPE QuietMIMOSA>¦<!DOCTYPE QuietMIMOSA [<!ENTITY e 'v'>]>¦"
    L"<!DOCTYPE QuietMIMOSA [<!ELEMENT HLE ANY>]>¦<!DOCTYPE QuietMIMOSA SYSTEM 'nowhere.dtd'>¦"
    L"<!DOCTYPE x [<!ENTITY e SYSTEM 'C:\\e.txt'>]>");

const Texts kRubbish = List(
    L"<¦>¦&¦&x;¦&#0;¦&#xD800;¦\"¦<b>¦</b>¦]]>¦<!--¦<b a=1/>¦<b a='1' a='2'/>¦<1/>¦\x1¦\xFFFE¦"
    L"\xD800¦\xDC00¦<b/¦<b a='<'/>¦<!x>¦&#x110000;¦<?xml version='1.0'?>¦<b a/>¦-->");

const Texts kNames = List(
    L"<p:b>x</p:b>¦<b p:a='1'/>¦<b:c:d/>¦<b :a='1'/>¦<b xmlns:p=''/>¦<xmlns:b/>¦"
    L"<b xmlns:xml='u'/>¦<b xmlns:p='u' xmlns:q='u' p:a='1' q:a='2'/>");

const Texts kNamespaces = List(L" xmlns='urn:u'¦ xmlns:p='urn:u'¦ xmlns:p='urn:u'");

const Texts kSpaces = List(L" xml:space='preserve'¦ xml:space='default'¦ xml:space='other'");

const Texts kNumbers = List(
    L"0¦1¦2¦-1¦007¦255¦2147483647¦2147483648¦-2147483648¦-2147483649¦4294967295¦"
    L"99999999999999999999¦0x0¦0xFF¦0xFFFFFF¦0XaB¦0xFFFFFFFF¦0x7FFFFFFF¦0x¦0xG¦x1¦１２¦٣¦+5¦"
    L"+-5¦--5¦- 5¦1.5¦.5¦5.¦.¦1e3¦1E-3¦1d2¦1e¦1e+¦1e400¦-1e400¦1e-400¦inf¦nan¦0x1p3¦1,5¦10.5pt¦"
    L"4.9406564584124654e-324¦2.2250738585072011e-308¦9007199254740993¦0.1¦"
    L"1.7976931348623158e308");

const Texts kBeforeNumbers = List(L"¦¦¦ ¦\t¦\x3000¦\xA0¦+¦-");
const Texts kAfterNumbers = List(L"¦¦¦ ¦x¦0¦.¦9¦e5¦９");

Text Escaped(const Text& text) {
  Text escaped;
  for (const wchar_t unit : text)
    escaped += Text(L"<&\"").find(unit) == Text::npos
                   ? Text(1, unit)
                   : L"&#" + std::to_wstring(static_cast<int>(unit)) + L";";
  return escaped;
}

/// What a document's kind changes. The kind's name is made of its features.
struct Plan {
  Text kind, before, encoding, outerAttributes, innerAttributes, space, afterRoot, after;
  Text versionName = L"Version";

  bool Has(const Text& feature) const { return kind.find(feature) != Text::npos; }
};

const Texts kKinds = List(
    L"plain¦blanks¦cdata¦cdata-blanks¦nested¦nested-blanks¦nested-cdata-blanks¦"
    L"nested-blanks-keep¦references¦references-blanks¦line-ends¦numbers¦hostile¦"
    L"twins¦prolog¦two-marks¦bad-start¦encoding¦xml-1.1¦doctype¦behind¦xmlns¦names¦"
    L"version¦deep¦wrapped¦broken");

/// A feature that puts one of some forms in one of some places.
const struct Insertion {
  const wchar_t* feature;
  std::vector<Text Plan::*> places;
  Texts forms;
} kInsertions[] = {
    {L"keep", {&Plan::space, &Plan::innerAttributes}, kSpaces},
    {L"prolog", {&Plan::before}, kProlog},
    {L"two-marks", {&Plan::before}, kMarks},
    {L"bad-start", {&Plan::before}, kBadProlog},
    {L"encoding", {&Plan::encoding}, kEncodings},
    {L"xml-1.1", {&Plan::before}, {L"<?xml version='1.1'?>"}},
    {L"doctype", {&Plan::before}, kDoctypes},
    {L"behind", {&Plan::after}, List(L" \n¦<!-- c -->¦<?p d?>¦x¦<b/>¦</b>")},
    {L"xmlns", {&Plan::outerAttributes, &Plan::innerAttributes}, kNamespaces},
    {L"names", {&Plan::afterRoot}, kNames},
    {L"version", {&Plan::versionName}, List(L"version¦VERSION¦x¦Versions")},
};

Plan MakePlan(Dice& dice, const Text& kind) {
  Plan plan;
  plan.kind = kind;
  const auto one = [&](const auto& list) { return list.size() == 1 ? list[0] : dice.Of(list); };
  for (const Insertion& insertion : kInsertions) {
    if (!plan.Has(insertion.feature)) continue;
    const Text form = one(insertion.forms);
    plan.*one(insertion.places) = form;
  }
  if (plan.Has(L"encoding"))
    plan.before = L"<?xml version='1.0' encoding='" + plan.encoding + L"'?>";
  if (plan.Has(L"deep")) {
    std::size_t depth = dice.OneIn(2) ? 20 + dice.Below(200) : 300 + dice.Below(300);
    while (depth-- > 0) plan.afterRoot = L"<d>" + plan.afterRoot + L"</d>";
  }
  if (plan.Has(L"broken")) plan.kind += dice.OneIn(2) ? L"-nested-blanks" : L"-cdata";
  return plan;
}

Text Content(Dice& dice, const Plan& plan) {
  if (plan.Has(L"numbers")) return Escaped(MakeNumber(dice));
  Text text;
  for (std::size_t i = 0, parts = 1 + dice.Below(3); i < parts; ++i) {
    if (plan.Has(L"blanks") && !dice.OneIn(3)) text += dice.Of(kBlanks);
    if (plan.Has(L"line-ends") && dice.OneIn(2)) text += dice.Of(kLineEnds);
    if (plan.Has(L"nested") && dice.OneIn(2)) text += dice.Of(kInner);
    if (plan.Has(L"cdata") && dice.OneIn(2)) text += dice.Of(kCData);
    if (plan.Has(L"references") && dice.OneIn(2)) text += dice.Of(kReferences);
    if (!dice.OneIn(4)) text += dice.Of(kWords);
    if (plan.Has(L"blanks") && dice.OneIn(2)) text += dice.Of(kBlanks);
  }
  return text;
}

Text Node(Dice& dice, const Plan& plan, const Text& name) {
  return L"<" + name + plan.space + L">" + Content(dice, plan) + L"</" + name + L">";
}

Text PolicyNodes(Dice& dice, const Plan& plan, const Texts& ids) {
  const Texts policies = List(L"1¦1¦2¦01¦-1¦ 1¦1 ");
  Text nodes;
  for (std::size_t i = 0, count = 1 + dice.Below(3); i < count; ++i) {
    nodes += L"<PolicyInfo ID='" + (i == 0 ? L"1" : dice.Of(policies)) + L"'><ElementIDs>";
    for (const Text& id : ids) nodes += L"<ID>" + Escaped(id) + L"</ID>";
    if (plan.Has(L"blanks")) nodes += L"\n<ID> " + Escaped(ids[0]) + L"\n</ID> ";
    nodes += L"</ElementIDs>";
    for (std::size_t twin = dice.Below(plan.Has(L"twins") ? 3 : 2); twin < 2; ++twin)
      nodes += Node(dice, plan, L"PrinterScope");
    nodes += L"</PolicyInfo>";
  }
  return nodes;
}

Text ElementNodes(Dice& dice, const Plan& plan, const Texts& ids) {
  Text nodes;
  for (const Text& id : ids) {
    nodes += L"<Element ID=\"" + Escaped(id) + L"\">";
    for (const Text& child : kChildren) {
      if (dice.OneIn(8)) continue;
      nodes += Node(dice, plan, child);
      if (plan.Has(L"twins") && dice.OneIn(3)) nodes += Node(dice, plan, child);
    }
    nodes += L"</Element>";
    if (plan.Has(L"blanks")) nodes += dice.Of(kBlanks);
  }
  return nodes;
}

Text Body(Dice& dice, const Plan& plan, const Texts& ids) {
  Text body = L"<HLE " + plan.versionName + L"='1'" + plan.innerAttributes + L">";
  if (plan.Has(L"wrapped")) body += L"<Other>";
  const Text elements = ElementNodes(dice, plan, ids);
  body += L"<Watermark><PolicyInfos>" + PolicyNodes(dice, plan, ids);
  body += L"</PolicyInfos><Elements>" + elements + L"</Elements></Watermark>";
  if (plan.Has(L"wrapped")) body += L"</Other>";
  return body + L"</HLE>";
}

/// Cuts, doubles or replaces something anywhere.
Text Broken(Dice& dice, Text xml) {
  const std::size_t at = dice.Below(xml.size()), way = dice.Below(4);
  if (way == 0) return xml.substr(0, at);
  if (way == 1) return xml.erase(at, 1 + dice.Below(3));
  if (way == 3) return xml.insert(at, dice.Of(kRubbish));
  const std::size_t count = 1 + dice.Below(20);
  return xml.insert(at, xml, dice.Below(xml.size()), count);
}

}  // namespace

std::wstring MakeNumber(Dice& dice) {
  Text text = dice.Of(kBeforeNumbers);
  text += dice.Of(kNumbers);
  text += dice.Of(kAfterNumbers);
  if (dice.OneIn(20)) text = Text(1 + dice.Below(400), L'9') + L"." + text;
  return text;
}

Document MakeDocument(unsigned number) {
  Dice dice(number);
  const Plan plan = MakePlan(dice, kKinds[number % kKinds.size()]);
  Document document{plan.kind, L"", {}};
  for (std::size_t i = 0, count = 1 + dice.Below(3); i < count; ++i)
    document.elementIds.push_back(
        dice.Of(plan.Has(L"hostile") && !dice.OneIn(3) ? kHostileIds : kIds));
  document.xml = plan.before + L"<QuietMIMOSA" + plan.outerAttributes + L">";
  if (plan.Has(L"blanks")) document.xml += L"\n  ";
  document.xml += Body(dice, plan, document.elementIds);
  if (plan.Has(L"twins") && dice.OneIn(2)) document.xml += Body(dice, plan, document.elementIds);
  document.xml += plan.afterRoot + L"</QuietMIMOSA>" + plan.after;
  if (plan.Has(L"broken")) document.xml = Broken(dice, document.xml);
  return document;
}

}  // namespace differential
