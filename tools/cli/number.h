#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>

namespace tool {

/// The number that `text` is as a whole, in decimal: no blank, sign "+" or prefix of another base
/// before it, nothing behind it. Empty where it is none, or none that `tNumber` holds.
template <class tNumber>
std::optional<tNumber> toNumber(const std::string& text) {
  tNumber number{};
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || behind != end) return {};
  if constexpr (!std::is_integral_v<tNumber>) {
    if (!std::isfinite(number)) return {};
  }
  return number;
}

/// Why `text` is no such number, for a message behind it.
template <class tNumber>
std::string whyNoNumber(const std::string& text) {
  if (!std::is_integral_v<tNumber>) return "is not a number";
  const std::size_t digits = text.rfind('-', 0) == 0 ? 1 : 0;
  const bool isOutOfRange =
      text.size() > digits && text.find_first_not_of("0123456789", digits) == std::string::npos;
  return isOutOfRange ? "is out of range" : "is not a whole number";
}

/// Makes `option` take such numbers only. CLI11 by itself takes an empty word for 0, "010" for 8
/// and blanks before a number.
template <class tNumber>
CLI::Option* requireNumber(CLI::Option* option) {
  const auto normalise = [](std::string& word) -> std::string {
    const auto number = toNumber<tNumber>(word);
    if (!number) return "\"" + word + "\" " + whyNoNumber<tNumber>(word);
    if constexpr (std::is_integral_v<tNumber>) word = std::to_string(*number);
    return "";
  };
  return option->transform(CLI::Validator(normalise, ""));
}

}  // namespace tool
