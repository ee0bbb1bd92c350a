#pragma once

// Policy documents for tests.

#include <string>
#include <utility>
#include <vector>

namespace tests {

struct Element {
  std::wstring id;
  std::vector<std::pair<std::wstring, std::wstring>> properties;
};

/// A document with one policy that lists all `elements`. `scope` is the text of `PrinterScope`;
/// null leaves the node out. Texts are not escaped.
inline std::wstring Policy(int id, const wchar_t* scope, const std::vector<Element>& elements) {
  std::wstring ids, nodes;
  for (const Element& element : elements) {
    ids += L"<ID>" + element.id + L"</ID>";
    nodes += L"<Element ID=\"" + element.id + L"\">";
    for (const auto& [name, text] : element.properties)
      nodes += L"<" + name + L">" + text + L"</" + name + L">";
    nodes += L"</Element>";
  }
  const std::wstring scopeNode =
      scope == nullptr ? L"" : L"<PrinterScope>" + std::wstring(scope) + L"</PrinterScope>";
  return L"<QuietMIMOSA><HLE Version=\"1\"><Watermark><PolicyInfos><PolicyInfo ID=\"" +
         std::to_wstring(id) + L"\"><ElementIDs>" + ids + L"</ElementIDs>" + scopeNode +
         L"</PolicyInfo></PolicyInfos><Elements>" + nodes +
         L"</Elements></Watermark></HLE></QuietMIMOSA>";
}

}  // namespace tests
