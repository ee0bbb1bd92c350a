#include "peers/settings_component/printer_settings.h"

#include <cmath>
#include <deque>
#include <vector>

#include "peers/settings_component/guid.h"
#include "peers/settings_component/object.h"

namespace peers {
namespace {

using Text = const wchar_t*;
using Flag = std::int32_t;

/// Shares the record with its entry, and so may outlive the entry.
class WatermarkObject : public Counted<Sigil::Watermark> {
 public:
  explicit WatermarkObject(std::shared_ptr<WatermarkRecord> record) : m_record(std::move(record)) {}

  Result GetId(GUID* guid) override {
    const auto id = ParseGuid(m_record->id);
    if (guid == nullptr) return kBadArgument;
    if (!id) return kFailed;
    *guid = *id;
    return Sigil::kSuccess;
  }
  Result SetName(Text text) override { return Set(m_record->name, text); }
  Result SetText(Text text) override { return Set(m_record->text, text); }
  Result SetFontName(Text text) override { return Set(m_record->fontName, text); }
  Result SetFontSize(double size) override { return Set(m_record->fontSize, size); }
  Result SetBold(Flag flag) override { return Set(m_record->bold, flag); }
  Result SetItalic(Flag flag) override { return Set(m_record->italic, flag); }
  Result SetUnderLine(Flag flag) override { return Set(m_record->underLine, flag); }
  Result SetFit(Flag flag) override { return Set(m_record->fit, flag); }
  Result SetRepeatFirstAxis(Flag flag) override { return Set(m_record->repeatFirstAxis, flag); }
  Result SetRepeatSecondAxis(Flag flag) override { return Set(m_record->repeatSecondAxis, flag); }
  Result SetColor(std::int32_t color) override { return Set(m_record->color, color); }
  Result SetXOffset(double offset) override { return Set(m_record->xOffset, offset); }
  Result SetYOffset(double offset) override { return Set(m_record->yOffset, offset); }
  Result SetRotate(std::int32_t degrees) override { return Set(m_record->rotate, degrees); }
  Result SetPrintPos(std::int32_t position) override { return Set(m_record->printPos, position); }
  Result SetOpacity(std::int32_t percent) override { return Set(m_record->opacity, percent); }
  Result SetPositionOption(std::int32_t option) override {
    return Set(m_record->positionOption, option);
  }
  Result SetRepeatVSpace(std::int32_t space) override { return Set(m_record->repeatVSpace, space); }
  Result SetRepeatHSpace(std::int32_t space) override { return Set(m_record->repeatHSpace, space); }

 private:
  static Result Set(std::string& field, Text text) {
    if (text == nullptr) return kBadArgument;
    return Guarded([&] {
      field = platform::ToUtf8(text);
      return Sigil::kSuccess;
    });
  }
  static Result Set(double& field, double number) {
    if (!std::isfinite(number)) return kBadArgument;
    field = number;
    return Sigil::kSuccess;
  }
  static Result Set(bool& field, Flag flag) {
    field = flag != 0;
    return Sigil::kSuccess;
  }
  static Result Set(std::int32_t& field, std::int32_t number) {
    field = number;
    return Sigil::kSuccess;
  }

  std::shared_ptr<WatermarkRecord> m_record;
};

class ActiveObject : public Counted<Sigil::LastSetting> {
 public:
  explicit ActiveObject(std::shared_ptr<ActiveRecord> record) : m_record(std::move(record)) {}

  Result SetName(Text text) override {
    if (text == nullptr) return kBadArgument;
    return Guarded([&] {
      m_record->name = platform::ToUtf8(text);
      return Sigil::kSuccess;
    });
  }
  Result SetEnable(Flag flag) override {
    m_record->enabled = flag != 0;
    return Sigil::kSuccess;
  }
  Result SetWatermarks(const GUID* first, std::uint32_t count) override {
    if (first == nullptr && count != 0) return kBadArgument;
    return Guarded([&] {
      std::vector<std::string> watermarks;
      for (std::uint32_t i = 0; i < count; ++i) watermarks.push_back(GuidText(first[i]));
      m_record->watermarks = std::move(watermarks);
      return Sigil::kSuccess;
    });
  }

 private:
  std::shared_ptr<ActiveRecord> m_record;
};

/// A deque, because a pass deletes thousands from the front.
template <class Record>
using Shared = std::deque<std::shared_ptr<Record>>;

template <class Record>
Shared<Record> Share(std::vector<Record>& records) {
  Shared<Record> shared;
  for (Record& record : records) shared.push_back(std::make_shared<Record>(std::move(record)));
  return shared;
}

template <class Record>
std::vector<Record> Copy(const Shared<Record>& shared) {
  std::vector<Record> records;
  records.reserve(shared.size());
  for (const auto& record : shared) records.push_back(*record);
  return records;
}

class PrinterSettingsObject : public Counted<Sigil::PrinterSettings> {
 public:
  PrinterSettingsObject(std::shared_ptr<Store> store, EntryRecord entry)
      : m_store(std::move(store)),
        m_settled(entry),
        m_lastSetting(std::make_shared<ActiveRecord>(std::move(entry.lastSetting))),
        m_customSettings(Share(entry.customSettings)),
        m_watermarks(Share(entry.watermarks)) {}

  Result Save(std::int32_t mode) override {
    if (mode != 0) return kBadArgument;
    return Guarded([&] {
      m_store->Write([&](SettingFile& file) { file.WriteEntry(m_settled); });
      return Sigil::kSuccess;
    });
  }

  Result Commit() override {
    return Guarded([&] {
      m_settled = {m_settled.printer, *m_lastSetting, Copy(m_customSettings), Copy(m_watermarks)};
      return Sigil::kSuccess;
    });
  }

  Result GetLastSetting(Sigil::LastSetting** out) override { return Give(m_lastSetting, out); }

  Result GetCustomSetting(Text name, Sigil::LastSetting** out) override {
    if (name == nullptr || out == nullptr) return kBadArgument;
    return Guarded([&] {
      const std::string wanted = platform::ToUtf8(name);
      for (const auto& setting : m_customSettings)
        if (setting->name == wanted) return Give(setting, out);
      return static_cast<Result>(kNotFound);
    });
  }

  Result CreateCustomSetting(Sigil::LastSetting** out) override {
    if (out == nullptr) return kBadArgument;
    return Guarded([&] {
      m_customSettings.push_back(std::make_shared<ActiveRecord>());
      return Give(m_customSettings.back(), out);
    });
  }

  /// Cuts a longer name, because a watermark that is not listed would never be deleted.
  Result GetWatermarkInfo(std::int32_t index, GUID* guid, wchar_t* buffer,
                          std::uint32_t capacity) override {
    const auto* mark = At(m_watermarks, index);
    if (mark == nullptr) return kNotFound;
    if (guid == nullptr || buffer == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      const auto id = ParseGuid((*mark)->id);
      if (!id) return kFailed;
      const std::wstring name = platform::FromUtf8((*mark)->name).substr(0, capacity);
      std::wmemcpy(buffer, name.c_str(), name.size() + 1);
      *guid = *id;
      return Sigil::kSuccess;
    });
  }

  Result GetWatermarkCount() override { return static_cast<Result>(m_watermarks.size()); }

  Result DeleteWatermark(const GUID* guid) override {
    if (guid == nullptr) return kBadArgument;
    return Guarded([&]() -> Result {
      const std::string id = GuidText(*guid);
      const auto place = std::find_if(m_watermarks.begin(), m_watermarks.end(),
                                      [&](const auto& mark) { return mark->id == id; });
      if (place == m_watermarks.end()) return kNotFound;
      m_watermarks.erase(place);
      return Sigil::kSuccess;
    });
  }

  Result CreateWatermark(Sigil::Watermark** out) override {
    if (out == nullptr) return kBadArgument;
    return Guarded([&] {
      auto mark = std::make_shared<WatermarkRecord>();
      mark->id = NewGuid();
      m_watermarks.push_back(mark);
      *out = new WatermarkObject(std::move(mark));
      return Sigil::kSuccess;
    });
  }

 private:
  static Result Give(const std::shared_ptr<ActiveRecord>& setting, Sigil::LastSetting** out) {
    if (out == nullptr) return kBadArgument;
    return Guarded([&] {
      *out = new ActiveObject(setting);
      return Sigil::kSuccess;
    });
  }

  std::shared_ptr<Store> m_store;
  EntryRecord m_settled;
  std::shared_ptr<ActiveRecord> m_lastSetting;
  Shared<ActiveRecord> m_customSettings;
  Shared<WatermarkRecord> m_watermarks;
};

}  // namespace

Sigil::PrinterSettings* CreatePrinterSettings(std::shared_ptr<Store> store, EntryRecord entry) {
  return new PrinterSettingsObject(std::move(store), std::move(entry));
}

}  // namespace peers
