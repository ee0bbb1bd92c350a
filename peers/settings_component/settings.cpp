#include <functional>
#include <vector>

#include "peers/settings_component/guid.h"
#include "peers/settings_component/object.h"
#include "peers/settings_component/printer_settings.h"
#include "peers/settings_component/store.h"

namespace peers {
namespace {

using Text = const wchar_t*;

/// A list of the file for enumeration, read anew by each count. It is unknown if the last count
/// failed.
template <class Item>
class Listing {
 public:
  explicit Listing(std::function<std::vector<Item>()> load) : m_load(std::move(load)) {}

  Result Count() {
    return Guarded([&] {
      m_isUnknown = true;
      m_items = m_load();
      m_isUnknown = false;
      return static_cast<Result>(m_items->size());
    });
  }
  bool IsUnknown() const { return m_isUnknown; }

  /// Returns the items of the last count; reads them if there was none.
  std::vector<Item>& Items() {
    if (!m_items) m_items = m_load();
    return *m_items;
  }

 private:
  std::function<std::vector<Item>()> m_load;
  std::optional<std::vector<Item>> m_items;
  bool m_isUnknown = false;
};

class SettingsObject : public Counted<Sigil::Settings> {
 public:
  Result Save(std::int32_t mode) override {
    if (mode != 0) return kBadArgument;
    // A failed count looked like an empty list, so nothing was deleted; saving would duplicate
    // entries.
    if (m_excluded.IsUnknown() || m_secondExcluded.IsUnknown()) return kFailed;
    return Guarded([&]() -> Result {
      const auto end = m_changes.begin() + static_cast<std::ptrdiff_t>(m_settled);
      const std::vector<ListChange> settled(m_changes.begin(), end);
      m_store->Write([&](SettingFile& file) { file.Apply(settled); });
      m_changes.erase(m_changes.begin(), end);
      m_settled = 0;
      return Sigil::kSuccess;
    });
  }

  Result Commit() override {
    m_settled = m_changes.size();
    return Sigil::kSuccess;
  }

  Result GetSettingFileDir(wchar_t* buffer, std::uint32_t* length) override {
    if (length == nullptr) return kBadArgument;
    return Guarded([&] { return GiveText(m_store->Folder(), buffer, length); });
  }

  Result GetPrinterSettingCount() override { return m_printers.Count(); }
  Result GetPrinterSettingName(std::int32_t index, wchar_t* buffer,
                               std::uint32_t* length) override {
    return NameOf(m_printers, index, buffer, length);
  }
  Result GetDriverSettingCount() override { return m_drivers.Count(); }
  Result GetDriverSettingName(std::int32_t index, wchar_t* buffer, std::uint32_t* length) override {
    return NameOf(m_drivers, index, buffer, length);
  }

  Result GetPrinterSettings(Text name, Sigil::PrinterSettings** out) override {
    if (name == nullptr || out == nullptr) return kBadArgument;
    return Guarded([&] {
      *out = CreatePrinterSettings(m_store, m_store->File().ReadEntry(platform::ToUtf8(name)));
      return Sigil::kSuccess;
    });
  }

  Result DeletePrinterSetting(Text path, Text text) override {
    return DeleteFrom(path, text, &SettingFile::DeletePrinter);
  }
  Result DeleteDriverSetting(Text path, Text text) override {
    return DeleteFrom(path, text, &SettingFile::DeleteDriver);
  }

  Result GetExcludePrinterCount() override { return m_excluded.Count(); }
  Result GetExcludePrinter(std::int32_t index, GUID* guid, wchar_t* buffer,
                           std::uint32_t* length) override {
    return EntryOf(m_excluded, index, guid, buffer, length);
  }
  Result AddExcludePrinter(Text name, GUID* guid) override {
    if (name == nullptr || guid == nullptr) return kBadArgument;
    return Guarded([&] {
      const ExcludeRecord entry{NewGuid(), platform::ToUtf8(name)};
      *guid = *ParseGuid(entry.id);
      m_excluded.Items().push_back(entry);
      m_changes.push_back(AddExclude{entry});
      return Sigil::kSuccess;
    });
  }
  Result DeleteExcludePrinter(const GUID* guid) override {
    return DeleteExclude<RemoveExclude>(m_excluded, guid);
  }

  Result GetSecondExcludeCount() override { return m_secondExcluded.Count(); }
  Result GetSecondExclude(std::int32_t index, GUID* guid, wchar_t* buffer,
                          std::uint32_t* length) override {
    return EntryOf(m_secondExcluded, index, guid, buffer, length);
  }
  Result DeleteSecondExclude(const GUID* guid) override {
    return DeleteExclude<RemoveSecondExclude>(m_secondExcluded, guid);
  }

  Result Lock() override {
    return Guarded([&] {
      m_store->Lock();
      return Sigil::kSuccess;
    });
  }
  Result UnLock() override { return m_store->UnLock() ? Sigil::kSuccess : Result{kFailed}; }

  Result SetUseContentLog(BYTE flag) override {
    return Guarded([&] {
      m_changes.emplace_back(SetContentLog{flag != 0});
      return Sigil::kSuccess;
    });
  }

 private:
  /// Returns the list with the unsaved changes of this object.
  template <class Remove>
  std::vector<ExcludeRecord> WithChanges(std::vector<ExcludeRecord> list) const {
    for (const ListChange& change : m_changes) {
      if (const auto* remove = std::get_if<Remove>(&change))
        std::erase_if(list, [&](const ExcludeRecord& entry) { return entry.id == remove->id; });
      if constexpr (std::is_same_v<Remove, RemoveExclude>)
        if (const auto* add = std::get_if<AddExclude>(&change)) list.push_back(add->entry);
    }
    return list;
  }

  static Result NameOf(Listing<std::string>& listing, std::int32_t index, wchar_t* buffer,
                       std::uint32_t* length) {
    if (length == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      const std::string* name = At(listing.Items(), index);
      return name == nullptr ? kNotFound : GiveText(platform::FromUtf8(*name), buffer, length);
    });
  }

  static Result EntryOf(Listing<ExcludeRecord>& listing, std::int32_t index, GUID* guid,
                        wchar_t* buffer, std::uint32_t* length) {
    if (guid == nullptr || length == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      const ExcludeRecord* entry = At(listing.Items(), index);
      const auto id = entry == nullptr ? std::nullopt : ParseGuid(entry->id);
      if (!id) return kNotFound;
      const Result result = GiveText(platform::FromUtf8(entry->name), buffer, length);
      if (!Sigil::Failed(result)) *guid = *id;
      return result;
    });
  }

  template <class Remove>
  Result DeleteExclude(Listing<ExcludeRecord>& listing, const GUID* guid) {
    if (guid == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      std::vector<ExcludeRecord>& list = listing.Items();
      const std::string id = GuidText(*guid);
      const auto place = std::find_if(list.begin(), list.end(),
                                      [&](const ExcludeRecord& entry) { return entry.id == id; });
      if (place == list.end()) return kNotFound;
      m_changes.push_back(Remove{id});
      list.erase(place);
      return Sigil::kSuccess;
    });
  }

  Result DeleteFrom(Text path, Text text, bool (SettingFile::*remove)(std::string_view)) {
    if (path == nullptr || text == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      const std::string name = platform::ToUtf8(text);
      const bool done =
          m_store->WriteAt(path, [&](SettingFile& file) { return (file.*remove)(name); });
      return done ? Result{Sigil::kSuccess} : Result{kNotFound};
    });
  }

  std::shared_ptr<Store> m_store = std::make_shared<Store>();
  std::vector<ListChange> m_changes;
  std::size_t m_settled = 0;
  Listing<std::string> m_printers{[this] { return m_store->File().PrinterNames(); }};
  Listing<std::string> m_drivers{[this] { return m_store->File().DriverNames(); }};
  Listing<ExcludeRecord> m_excluded{
      [this] { return WithChanges<RemoveExclude>(m_store->File().Excluded()); }};
  Listing<ExcludeRecord> m_secondExcluded{
      [this] { return WithChanges<RemoveSecondExclude>(m_store->File().SecondExcluded()); }};
};

class StringObject : public Counted<Sigil::String> {
 public:
  Text GetDisplayText() override { return m_text.c_str(); }
  Result SetKind(std::int32_t kind) override {
    m_kind = kind;
    return Sigil::kSuccess;
  }
  Result GetKind() override { return m_kind; }
  Result SetText(Text text) override {
    if (text == nullptr) return kBadArgument;
    return Guarded([&] {
      m_text = std::wstring(text);  // a copy first, because `text` may be this object's own
      return Sigil::kSuccess;
    });
  }
  Text GetText() override { return m_text.c_str(); }

 private:
  std::int32_t m_kind = 0;
  std::wstring m_text;
};

}  // namespace

Sigil::Settings* CreateSettings() {
  return new SettingsObject;
}

Sigil::String* CreateString() {
  return new StringObject;
}

}  // namespace peers
