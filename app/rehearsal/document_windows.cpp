#include <exception>
#include <new>
#include <stdexcept>

#include "app/rehearsal/document.h"
#include "platform/owner.h"
#include "platform/utf.h"
#include "platform/xml.h"

namespace app {
namespace {

// MinGW-w64 declares these interfaces, but no library of its has their identities.
constexpr CLSID kReaderClass = {  // SAXXMLReader60
    0x88D96A0C,
    0xF192,
    0x11D4,
    {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};
constexpr IID kReader = {  // ISAXXMLReader
    0xA4F96ED0,
    0xF829,
    0x476E,
    {0x81, 0xC0, 0xCD, 0xC7, 0xBD, 0x2A, 0x08, 0x02}};

constexpr auto kCloseCom = [](bool) { CoUninitialize(); };
constexpr auto kRelease = [](ISAXXMLReader* reader) { reader->Release(); };

std::string Text(const wchar_t* text, int length) {
  return platform::ToUtf8({text, static_cast<std::size_t>(length)});
}

/// Takes the events of the system's parser. An exception in one is kept until the parser has
/// returned. It lives on the stack, so references to it are not counted.
class Handler : public ISAXContentHandler {
 public:
  explicit Handler(DocumentEvents& events) : m_events(events) {}
  virtual ~Handler() = default;

  void Read(const std::string& text) {
    _com_util::CheckError(CoInitialize(nullptr));
    const Owner<bool, kCloseCom> com(true);
    Owner<ISAXXMLReader*, kRelease> reader;
    _com_util::CheckError(CoCreateInstance(kReaderClass, nullptr, CLSCTX_ALL, kReader,
                                           reinterpret_cast<void**>(reader.Out())));
    _com_util::CheckError(reader->putContentHandler(this));
    VARIANT input;
    VariantInit(&input);
    const _bstr_t wide(platform::FromUtf8(text).c_str());
    input.vt = VT_BSTR;
    input.bstrVal = wide;
    const HRESULT result = reader->parse(input);
    if (m_thrown) std::rethrow_exception(m_thrown);
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    if (FAILED(result)) throw std::runtime_error("the policy cannot be read");
  }

  HRESULT WINAPI QueryInterface(REFIID /*id*/, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG WINAPI AddRef() override { return 2; }
  ULONG WINAPI Release() override { return 1; }

  HRESULT WINAPI putDocumentLocator(ISAXLocator* locator) override {
    m_locator = locator;
    return S_OK;
  }
  HRESULT WINAPI startDocument() override { return S_OK; }
  HRESULT WINAPI endDocument() override { return S_OK; }
  HRESULT WINAPI startPrefixMapping(const wchar_t*, int, const wchar_t*, int) override {
    return S_OK;
  }
  HRESULT WINAPI endPrefixMapping(const wchar_t*, int) override { return S_OK; }
  HRESULT WINAPI startElement(const wchar_t*, int space, const wchar_t* name, int length,
                              const wchar_t*, int, ISAXAttributes* attributes) override {
    return Guard([&] { Start(Text(name, length), space == 0, *attributes); });
  }
  HRESULT WINAPI endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*,
                            int) override {
    return Guard([&] { m_events.End(); });
  }
  HRESULT WINAPI characters(const wchar_t* text, int length) override {
    return Guard([&] { m_events.AddText(Text(text, length)); });
  }
  HRESULT WINAPI ignorableWhitespace(const wchar_t* text, int length) override {
    return characters(text, length);
  }
  HRESULT WINAPI processingInstruction(const wchar_t*, int, const wchar_t*, int) override {
    return S_OK;
  }
  HRESULT WINAPI skippedEntity(const wchar_t*, int) override { return S_OK; }

 private:
  template <class Action>
  HRESULT Guard(Action action) {
    try {
      action();
      return S_OK;
    } catch (...) {
      m_thrown = std::current_exception();
      return E_FAIL;
    }
  }

  void Start(const std::string& name, bool isPlain, ISAXAttributes& attributes) {
    int count = 0;
    _com_util::CheckError(attributes.getLength(&count));
    std::vector<DocumentEvents::Attribute> list;
    for (int i = 0; i < count; ++i) {
      const wchar_t *space, *local, *qualified, *value;
      int spaceSize, localSize, qualifiedSize, valueSize;
      _com_util::CheckError(attributes.getName(i, &space, &spaceSize, &local, &localSize,
                                               &qualified, &qualifiedSize));
      _com_util::CheckError(attributes.getValue(i, &value, &valueSize));
      const std::string whole = Text(qualified, qualifiedSize);
      if (whole == "xmlns" || whole.starts_with("xmlns:") || whole.starts_with("xml:")) continue;
      list.push_back({Text(local, localSize), Text(value, valueSize), spaceSize == 0});
    }
    int line = 0;
    if (m_locator != nullptr) m_locator->getLineNumber(&line);
    m_events.Start(name, isPlain, list, line);
  }

  DocumentEvents& m_events;
  ISAXLocator* m_locator = nullptr;
  std::exception_ptr m_thrown;
};

}  // namespace

void ParseDocument(const std::string& text, DocumentEvents& events) {
  Handler(events).Read(text);
}

}  // namespace app
