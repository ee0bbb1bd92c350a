#include "app/machine/policy_text.h"

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

IXMLDOMNodePtr Find(const IXMLDOMNodePtr& node, const std::wstring& query) {
  IXMLDOMNodePtr found;
  CheckError(node->selectSingleNode(_bstr_t(query.c_str()), &found));
  return found;
}

std::size_t Count(const IXMLDOMNodePtr& node, const std::wstring& query) {
  IXMLDOMNodeListPtr nodes;
  CheckError(node->selectNodes(_bstr_t(query.c_str()), &nodes));
  LONG count = 0;
  CheckError(nodes->get_length(&count));
  return static_cast<std::size_t>(count);
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

/// Returns whether the document's first element is in a namespace, in which nobody looks for it.
bool HasNamespace(const std::wstring& text) {
  std::size_t at = text.find(L'<');
  while (at != text.npos && at + 1 < text.size() && (text[at + 1] == L'?' || text[at + 1] == L'!'))
    at = text.find(L'<', text.find(text[at + 1] == L'?' ? L"?>" : L"-->", at));
  if (at == text.npos) return false;
  const std::wstring tag = text.substr(at, text.find(L'>', at) - at);
  const std::size_t nameEnd = tag.find_first_of(L" \t\r\n/");
  return tag.find(L':') < nameEnd || tag.find(L"xmlns=") != tag.npos;
}

PolicyText Read(const std::wstring& text, int policyId) {
  CheckError(CoInitialize(nullptr));
  const Owner<bool, kCloseCom> com(true);
  const IXMLDOMDocument2Ptr document = NewDocument();
  VARIANT_BOOL isLoaded = VARIANT_FALSE;
  CheckError(document->loadXML(_bstr_t(text.c_str()), &isLoaded));
  if (isLoaded == VARIANT_FALSE) return {.refusal = WhyNotLoaded(document)};
  const IXMLDOMNodePtr root = Find(document, L"QuietMIMOSA/HLE");
  if (root == nullptr)
    return {.refusal = HasNamespace(text) ? "its first element has a namespace; take the xmlns off"
                                          : "no element QuietMIMOSA/HLE"};

  const std::wstring number = std::to_wstring(policyId);
  const std::wstring query = L"./Watermark/PolicyInfos/PolicyInfo[@ID=\"" + number + L"\"]";
  PolicyText policy;
  policy.hasPolicy = Find(root, query) != nullptr;
  policy.listed = Count(root, query + L"/ElementIDs/ID");
  if (const IXMLDOMNodePtr scope = Find(root, query + L"/PrinterScope"); scope != nullptr) {
    _bstr_t written;
    CheckError(scope->get_text(written.GetAddress()));
    policy.scope = Text(written);
  }
  return policy;
}

}  // namespace

std::string ScopeMeaning(int scope) {
  if (scope == -1) return "none";
  if (scope == 1) return "the default entry, not the suite's printers";
  if (scope == 2) return "the suite's printers, not the default entry";
  return "the default entry and the suite's printers";
}

PolicyText ReadPolicy(const std::wstring& text, int policyId) {
  if (text.empty()) return {.refusal = "it holds no text"};
  try {
    return Read(text, policyId);
  } catch (const _com_error& error) {
    return {.refusal = "the XML service fails: " + platform::ToUtf8(error.ErrorMessage())};
  }
}

}  // namespace app
