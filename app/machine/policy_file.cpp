#include "app/machine/policy_file.h"

#include <algorithm>
#include <cctype>

#include "app/machine/client.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "platform/utf.h"
#include "platform/xml.h"
#include "policy/policy_file_cipher.h"

namespace app {
namespace {

using _com_util::CheckError;

constexpr std::size_t kChunk = CPolicyFileCipher::kChunkSize;

bool IsInsideCharacter(std::string_view text, std::size_t place) {
  return place < text.size() && (text[place] & 0xC0) == 0x80;
}

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

bool FindKey(PolicyKey& key) {
  try {
    CPolicyFileCipher().BuildKey(key.key, key.vector);
    return true;
  } catch (const CException&) {
    return false;
  }
}

KeyState ExamineKey() {
  KeyState state;
  try {
    const auto source = ReadInput(HostPath(KeySource()), kGreatestKeySource);
    state.isThere = source && !source->empty();
    state.source = source ? std::to_string(source->size()) + " bytes" : "missing";
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (source && !kMachineIsFolder && !std::ranges::all_of(*source, isAscii))
      state.source += "; not all ASCII, so a host with another ANSI code page makes another key";
  } catch (const std::runtime_error& error) {
    state.source = std::string("unreadable: ") + error.what();
  }
  PolicyKey key;
  state.gives = FindKey(key);
  if (!state.gives)
    state.source += "; no key comes of it, since 33 are the most";
  else if (!state.isThere)
    state.source += "; the key is all zero then";
  return state;
}

std::optional<Unsealed> Unseal(const std::wstring& path) {
  const auto bytes = ReadInput(HostPath(path), kGreatestSealedPolicy);
  if (!bytes) return std::nullopt;
  CString text;
  if (CPolicyFileCipher().DecryptFile(path.c_str(), text) != 0)
    throw std::runtime_error("it cannot be opened");
  std::wstring clear = text.GetString();
  if (clear.starts_with(L'\uFEFF')) clear.erase(0, 1);
  PolicyText policy = ReadPolicy(clear);
  const bool isNoise =
      clear.empty() || (!policy.refusal.empty() && clear.find(L'\uFFFD') != clear.npos);
  return Unsealed{std::move(clear), bytes->size(), std::move(policy), isNoise};
}

std::string SealText(std::string_view text) {
  PolicyKey key;
  if (!FindKey(key)) throw std::logic_error("sealing without a key");
  std::string sealed;
  do {
    // One byte less than a chunk leaves room for the NUL.
    std::size_t length = std::min(text.size(), kChunk - 1);
    while (IsInsideCharacter(text, length)) --length;
    std::string clear(text.substr(0, length));
    text.remove_prefix(length);
    clear.resize(text.empty() ? (length / kCipherBlock + 1) * kCipherBlock : kChunk);
    sealed += Encrypt(clear, key);
  } while (!text.empty());
  return sealed;
}

PolicySource ReadSealed(const std::string& file) {
  const KeyState key = ExamineKey();
  if (!key.gives) throw UsageError(HostPath(KeySource()).string() + ": " + key.source);
  const std::wstring path =
      file.empty() ? FindDeliveryFolder().PolicyFile()
                   : platform::FromUtf8(std::filesystem::absolute(PathOf(file)).string());
  const std::string name = file.empty() ? HostPath(path).string() : file;
  try {
    auto unsealed = Unseal(path);
    if (!unsealed) throw std::runtime_error(std::string("no such file; ") + kMendMissing);
    if (!unsealed->isNoise) return {std::move(unsealed->text), name};
    const auto bytes = ReadInput(HostPath(path), kGreatestSealedPolicy);
    const bool isText = bytes && DecodeText(*bytes);
    throw std::runtime_error(isText ? "it is text, not a sealed file" : kOtherKey);
  } catch (const std::runtime_error& error) {
    throw UsageError(name + ": " + error.what());
  }
}

PolicySource ReadPolicySource(const std::string& file) {
  if (file.empty()) return ReadSealed(file);
  const std::string bytes = ReadBytes(file);
  if (auto text = DecodeText(bytes)) return {std::move(*text), NameOf(file)};
  const bool isSealed =
      file != kStandardStream && bytes.size() % kCipherBlock == 0 && !bytes.starts_with('<');
  if (!isSealed) throw UsageError(NameOf(file) + ": " + WhyNoText(bytes));
  return ReadSealed(file);
}

}  // namespace app
