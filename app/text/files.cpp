#include "app/text/files.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "app/text/errors.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

std::optional<std::wstring> IfSound(std::wstring text, bool isSound) {
  if (!isSound || text.find(L'\0') != text.npos) return std::nullopt;
  return text;
}

/// The codecs replace what is ill-formed, so that it does not survive the way there and back.
std::optional<std::wstring> FromUtf8(std::string_view bytes) {
  std::wstring text = platform::FromUtf8(bytes);
  const bool isSound = platform::ToUtf8(text) == bytes;
  return IfSound(std::move(text), isSound);
}

std::optional<std::wstring> FromUtf16Le(std::string_view bytes) {
  std::wstring text = platform::FromUtf16LeBytes(bytes);
  const bool isSound = bytes.size() % 2 == 0 && platform::FromUtf8(platform::ToUtf8(text)) == text;
  return IfSound(std::move(text), isSound);
}

std::optional<std::wstring> FromUtf16Be(std::string_view bytes) {
  std::string swapped(bytes);
  for (std::size_t i = 1; i < swapped.size(); i += 2) std::swap(swapped[i - 1], swapped[i]);
  return FromUtf16Le(swapped);
}

std::string ReadStandardInput() {
  std::string bytes;
  char block[0x10000];
  do {
    std::cin.read(block, sizeof block);
    bytes.append(block, static_cast<std::size_t>(std::cin.gcount()));
    RequireSize(bytes.size(), kGreatestPolicy);
  } while (std::cin);
  return bytes;
}

}  // namespace

void RequireSize(std::size_t size, std::size_t greatest) {
  if (size > greatest)
    throw std::runtime_error("more than " + std::to_string(greatest / 1024) + " KiB");
}

std::optional<std::wstring> DecodeText(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return FromUtf8(bytes.substr(3));
  if (bytes.starts_with("\xFF\xFE")) return FromUtf16Le(bytes.substr(2));
  if (bytes.starts_with("\xFE\xFF")) return FromUtf16Be(bytes.substr(2));
  if (bytes.size() >= 2 && bytes[0] != 0 && bytes[1] == 0) return FromUtf16Le(bytes);
  if (bytes.size() >= 2 && bytes[0] == 0 && bytes[1] != 0) return FromUtf16Be(bytes);
  return FromUtf8(bytes);
}

std::string ReadBytes(const std::string& file) try {
  auto bytes =
      file == kStandardStream ? ReadStandardInput() : ReadInput(PathOf(file), kGreatestPolicy);
  if (!bytes) throw std::runtime_error("no such file");
  if (bytes->empty()) throw std::runtime_error("the file is empty");
  return std::move(*bytes);
} catch (const std::runtime_error& error) {
  throw UsageError(NameOf(file) + ": " + error.what());
}

std::wstring ReadTextFile(const std::string& file) {
  const std::string bytes = ReadBytes(file);
  auto text = DecodeText(bytes);
  if (!text) throw UsageError(NameOf(file) + ": " + WhyNoText(bytes));
  return std::move(*text);
}

std::string WhyNoText(std::string_view bytes) {
  constexpr std::size_t kCipherBlock = 16;
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF"))
    return "ill-formed UTF-16 text";
  const std::string sound = platform::ToUtf8(platform::FromUtf8(bytes));
  const auto illFormed = std::ranges::mismatch(bytes, sound).in1;
  const auto place = std::find(bytes.begin(), illFormed, '\0') - bytes.begin();
  const auto line = 1 + std::count(bytes.begin(), bytes.begin() + place, '\n');
  return "neither UTF-8 nor UTF-16 text, by its byte " + std::to_string(place + 1) + " on line " +
         std::to_string(line) +
         (bytes.size() % kCipherBlock == 0 ? "; of a sealed file `sigilctl unseal` gives the text"
                                           : "");
}

std::string NameOf(const std::string& file) {
  return file == kStandardStream ? "standard input" : platform::Visible(file);
}

void WriteOutput(const std::filesystem::path& file, std::string_view bytes) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (exists(status) && !is_regular_file(status))
    throw UsageError(file.string() + ": " + kNotRegular);
  ReplaceOutput(file, bytes);
}

bool WriteOrPrint(const std::string& file, std::string_view bytes) {
  const bool isFile = file != kStandardStream;
  if (isFile)
    WriteOutput(PathOf(file), bytes);
  else
    PrintBytes(bytes);
  return isFile;
}

}  // namespace app
