#include "support/colour_text.h"

#include <array>
#include <cstdio>

namespace tq {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::int32_t FromRgb(int r, int g, int b) { return r | (g << 8) | (b << 16); }

std::optional<std::int32_t> ParseHex(std::string_view text) {
  if (text.size() != 6) return std::nullopt;
  std::int32_t rgb = 0;
  for (char c : text) {
    const int digit = HexDigit(c);
    if (digit < 0) return std::nullopt;
    rgb = rgb << 4 | digit;
  }
  return FromRgb(rgb >> 16 & 0xFF, rgb >> 8 & 0xFF, rgb & 0xFF);
}

// Three decimal components, separated by commas or by blanks (one kind per text).
std::optional<std::int32_t> ParseDecimal(std::string_view text) {
  const bool commas = text.find(',') != std::string_view::npos;
  std::array<int, 3> parts{};
  std::size_t at = 0;
  for (int k = 0; k < 3; ++k) {
    while (at < text.size() && IsBlank(text[at])) ++at;
    int value = 0, digits = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, ++digits) {
      value = value * 10 + (text[at] - '0');
      if (value > 255) return std::nullopt;
    }
    if (digits == 0) return std::nullopt;
    parts[k] = value;
    if (k == 2) break;
    if (commas) {
      while (at < text.size() && IsBlank(text[at])) ++at;
      if (at >= text.size() || text[at] != ',') return std::nullopt;
      ++at;
    } else if (at >= text.size() || !IsBlank(text[at])) {
      return std::nullopt;
    }
  }
  if (at != text.size()) return std::nullopt;
  return FromRgb(parts[0], parts[1], parts[2]);
}

}  // namespace

std::string FormatColourText(std::int32_t colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", colour & 0xFF, colour >> 8 & 0xFF, colour >> 16 & 0xFF);
  return text;
}

std::optional<std::int32_t> ParseColourText(std::string_view text) {
  text = Trim(text);
  if (!text.empty() && text.front() == '#') return ParseHex(text.substr(1));
  if (auto hex = ParseHex(text)) return hex;
  return ParseDecimal(text);
}

}  // namespace tq
