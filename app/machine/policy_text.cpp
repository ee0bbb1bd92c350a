#include "app/machine/policy_text.h"

#include <algorithm>
#include <cctype>

#include "platform/owner.h"
#include "platform/utf.h"
#include "platform/xml.h"

namespace app {
namespace {

using _com_util::CheckError;

constexpr auto kCloseCom = [](bool) { CoUninitialize(); };

std::wstring Text(const _bstr_t& text) {
  return {static_cast<const wchar_t*>(text), text.length()};
}

IXMLDOMDocument2Ptr NewDocument() {
  IXMLDOMDocument2Ptr document;
  CheckError(CoCreateInstance(CLSID_DOMDocument60, nullptr, CLSCTX_ALL, IID_IXMLDOMDocument2,
                              reinterpret_cast<void**>(&document)));
  return document;
}

IXMLDOMNodePtr Find(const IXMLDOMNodePtr& node, const wchar_t* query) {
  IXMLDOMNodePtr found;
  CheckError(node->selectSingleNode(_bstr_t(query), &found));
  return found;
}

std::wstring TextOf(const IXMLDOMNodePtr& node) {
  _bstr_t text;
  CheckError(node->get_text(text.GetAddress()));
  return Text(text);
}

std::optional<std::wstring> TextOf(const IXMLDOMNodePtr& node, const wchar_t* query) {
  const IXMLDOMNodePtr found = Find(node, query);
  if (found == nullptr) return std::nullopt;
  return TextOf(found);
}

std::wstring IdOf(const IXMLDOMNodePtr& node) {
  IXMLDOMNamedNodeMapPtr attributes;
  CheckError(node->get_attributes(&attributes));
  LONG count = 0;
  CheckError(attributes->get_length(&count));
  for (LONG i = 0; i < count; ++i) {
    IXMLDOMNodePtr attribute;
    CheckError(attributes->get_item(i, &attribute));
    _bstr_t name;
    CheckError(attribute->get_nodeName(name.GetAddress()));
    if (Text(name) == L"ID") return TextOf(attribute);
  }
  return L"";
}

template <class Action>
void ForEach(const IXMLDOMNodePtr& node, const wchar_t* query, Action action) {
  IXMLDOMNodeListPtr nodes;
  CheckError(node->selectNodes(_bstr_t(query), &nodes));
  LONG count = 0;
  CheckError(nodes->get_length(&count));
  for (LONG i = 0; i < count; ++i) {
    IXMLDOMNodePtr item;
    CheckError(nodes->get_item(i, &item));
    action(item);
  }
}

std::string WhyNotLoaded(const IXMLDOMDocument2Ptr& document) {
  IXMLDOMParseErrorPtr error;
  CheckError(document->get_parseError(&error));
  LONG line = 0;
  CheckError(error->get_line(&line));
  _bstr_t reason;
  CheckError(error->get_reason(reason.GetAddress()));
  std::string why = platform::ToUtf8(Text(reason));
  while (!why.empty() && std::isspace(static_cast<unsigned char>(why.back()))) why.pop_back();
  // What libxml2 says of an ampersand that stands for itself.
  if (why.find("EntityRef: ") != why.npos) why += "; write &amp; for &";
  return "no well-formed XML (line " + std::to_string(line) + ": " + why + ")";
}

PolicyText Read(const std::wstring& text) {
  CheckError(CoInitialize(nullptr));
  const Owner<bool, kCloseCom> com(true);
  const IXMLDOMDocument2Ptr document = NewDocument();
  VARIANT_BOOL isLoaded = VARIANT_FALSE;
  CheckError(document->loadXML(_bstr_t(text.c_str()), &isLoaded));
  if (isLoaded == VARIANT_FALSE) return {WhyNotLoaded(document), {}, {}};
  const IXMLDOMNodePtr root = Find(document, L"QuietMIMOSA/HLE");
  if (root == nullptr) return {"no element QuietMIMOSA/HLE", {}, {}};

  PolicyText policy;
  ForEach(root, L"./Watermark/PolicyInfos/PolicyInfo", [&](const IXMLDOMNodePtr& info) {
    Policy& added = policy.policies.emplace_back();
    added.id = IdOf(info);
    added.scope = TextOf(info, L"./PrinterScope");
    ForEach(info, L"./ElementIDs/ID",
            [&](const IXMLDOMNodePtr& id) { added.elementIds.push_back(TextOf(id)); });
  });
  ForEach(root, L"./Watermark/Elements/Element", [&](const IXMLDOMNodePtr& element) {
    policy.elements.push_back({IdOf(element), TextOf(element, L"./Kind").value_or(L""),
                               TextOf(element, L"./Name").value_or(L"")});
  });
  return policy;
}

}  // namespace

PolicyText ReadPolicy(const std::wstring& text) {
  if (text.empty()) return {"it holds no text", {}, {}};
  try {
    return Read(text);
  } catch (const _com_error& error) {
    return {"the XML service fails: " + platform::ToUtf8(error.ErrorMessage()), {}, {}};
  }
}

bool HasSwitchingPolicy(const PolicyText& text) {
  return std::ranges::find(text.policies, L"1", &Policy::id) != text.policies.end();
}

}  // namespace app
