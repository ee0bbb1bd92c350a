#include "app/rehearsal/fields.h"

#include <charconv>
#include <cstdio>

#include "app/text/table.h"

namespace app {
namespace {

constexpr char kColor[] = "color";

template <auto kMember>
FieldValue Get(const peers::WatermarkRecord& mark) {
  return mark.*kMember;
}

}  // namespace

const std::vector<Field>& Fields() {
  using Mark = peers::WatermarkRecord;
  static const std::vector<Field> fields = {
      {"name", &Get<&Mark::name>},
      {"text", &Get<&Mark::text>},
      {"fontSize", &Get<&Mark::fontSize>},
      {"fontName", &Get<&Mark::fontName>},
      {kColor, &Get<&Mark::color>},
      {"bold", &Get<&Mark::bold>},
      {"italic", &Get<&Mark::italic>},
      {"underLine", &Get<&Mark::underLine>},
      {"fit", &Get<&Mark::fit>},
      {"opacity", &Get<&Mark::opacity>},
      {"rotate", &Get<&Mark::rotate>},
      {"printPos", &Get<&Mark::printPos>},
      {"positionOption", &Get<&Mark::positionOption>},
      {"xOffset", &Get<&Mark::xOffset>},
      {"yOffset", &Get<&Mark::yOffset>},
      {"repeatFirstAxis", &Get<&Mark::repeatFirstAxis>},
      {"repeatSecondAxis", &Get<&Mark::repeatSecondAxis>},
      {"repeatHSpace", &Get<&Mark::repeatHSpace>},
      {"repeatVSpace", &Get<&Mark::repeatVSpace>},
  };
  return fields;
}

std::string Shown(const Field& field, const FieldValue& value) {
  constexpr std::size_t kTextWidth = 40;
  char text[32] = {};
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "on" : "off";
  if (const auto* words = std::get_if<std::string>(&value))
    return "'" + OneLine(*words, kTextWidth) + "'";
  if (const auto* real = std::get_if<double>(&value))
    return {text, std::to_chars(text, text + sizeof text, *real).ptr};
  const auto number = std::get<std::int32_t>(value);
  if (field.name == kColor) {
    std::snprintf(text, sizeof text, "0x%06X", static_cast<unsigned>(number));
    return text;
  }
  return std::to_string(number);
}

Json JsonOf(const FieldValue& value) {
  return std::visit([](const auto& each) { return Json(each); }, value);
}

Json JsonOf(const peers::WatermarkRecord& mark) {
  Json json;
  for (const Field& field : Fields()) json[field.name] = JsonOf(field.get(mark));
  return json;
}

}  // namespace app
