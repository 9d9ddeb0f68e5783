#include "editor/host_exchange.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <cstdio>
#include <string_view>
#include <utility>

#include "support/platform.h"

namespace tq {

namespace {

// An answer with status 0 and a value; anything else is no data.
bool Ask(HostLink* host, const std::string& expression, HostValue& value) {
  std::int32_t status = -1;
  return host && host->Evaluate(expression, status, value) && status == 0 && !value.empty();
}

std::string NumberText(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", number);
  return text;
}

enum ListBit : unsigned { AL1 = 1, AL2 = 2, EL = 4, BL = 8, TGM = 16, TTM = 32, MRGM = 64, MRTM = 128 };
constexpr std::string_view kListNames[] = {"AL1", "AL2", "EL", "BL", "TGM", "TTM", "MRGM", "MRTM"};

struct ListItem {
  int index;
  std::string_view key;
  unsigned lists;
};

// In increasing index order, which is the order of the items in each list.
constexpr ListItem kListItems[] = {
    {35, "ST_FAULTY=", TGM | MRGM},  {37, "ST_MANUALLY_ENTERED=", TGM | MRGM},
    {38, "ST_NOT_SAMPLED=", TGM | MRGM},  // the filter never lets index 38 through; kept as the host knows it
    {39, "ST_OBSOLETE=", TGM | MRGM}, {256, "BG=", AL1 | AL2},
    {257, "GL=", AL1 | AL2},         {258, "TXT=", AL1 | AL2},
    {262, "BG=", EL},                {263, "GL=", EL},
    {264, "DB=", EL},                {265, "TXT=", EL},
    {266, "BG=", BL},                {267, "GL=", BL},
    {268, "TXT=", BL},               {269, "BG=", TGM},
    {270, "HL=", TGM},               {272, "BG=", TTM},
    {273, "BGS=", TTM},              {274, "GL=", TTM},
    {275, "TXT=", TTM},              {276, "BG=", MRGM},
    {277, "HL=", MRGM},              {279, "BG=", MRTM},
    {280, "BGS=", MRTM},             {281, "GL=", MRTM},
    {282, "TXT=", MRTM},
};

bool IsSent(int index, std::int32_t value) {
  if (value == kClutNotDefined) return false;
  const bool state_colour = index == 35 || index == 37 || index == 39 || index == 56;
  return state_colour || (index >= 256 && index <= 282);
}

void Refresh(Platform& platform, const ColorSchemeModule& module, ColorTableState& state) {
  // The host is waiting for an answer, not for a message box.
  if (!state.ClutError) LoadColorTable(platform, module, state, false, LoadReport::Quiet());
}

}  // namespace

std::string VoltageNamesExpression(std::size_t level_count) {
  std::string expression = "#return TRANSLATION(VECTOR(";
  for (std::size_t k = 0; k < level_count; ++k) {
    if (k > 0) expression += ",";
    expression += "\"SYS_NT_POWER_LX_" + std::to_string(k) + "\"";
  }
  return expression + "))";
}

VoltageLevels FetchVoltageLevels(HostLink* host) {
  VoltageLevels levels;
  HostValue reply;
  if (!Ask(host, kVoltageLevelsExpression, reply)) return levels;
  if (reply.kind != HostValue::Kind::Vector || reply.items.size() < 3) return levels;
  const HostValue& found = reply.items[2];
  if (found.kind != HostValue::Kind::Vector) return levels;

  const std::size_t n = found.items.size();
  // The host's count after a failed translation is the end value of the key loop.
  levels.count = static_cast<int>(std::min<std::size_t>(n, INT_MAX - 1)) + 1;
  HostValue names;
  if (!Ask(host, VoltageNamesExpression(n), names) || names.kind != HostValue::Kind::Vector) return levels;
  const auto nested = [](const HostValue& v) { return v.kind == HostValue::Kind::Vector; };
  if (std::any_of(names.items.begin(), names.items.end(), nested)) return levels;

  levels.count = static_cast<int>(std::min<std::size_t>(names.items.size(), INT_MAX));
  for (std::size_t k = 0; k < names.items.size() && k < kVoltageRowCount; ++k) {
    const HostValue& name = names.items[k];
    levels.names.push_back(name.kind == HostValue::Kind::Number ? NumberText(name.number) : name.text);
  }
  return levels;
}

std::vector<ColorList> ColorLists(const ColorTableArray& table) {
  std::vector<ColorList> lists;
  for (std::size_t l = 0; l < std::size(kListNames); ++l) {
    ColorList list{kListNames[l], {}};
    for (const ListItem& item : kListItems) {
      const std::int32_t value = table[item.index];
      if ((item.lists & (1u << l)) && IsSent(item.index, value)) list.items.push_back({item.key, value});
    }
    if (!list.items.empty()) lists.push_back(std::move(list));
  }
  return lists;
}

std::string ColorListExpression(const ColorTableArray& table) {
  std::string body;
  for (const ColorList& list : ColorLists(table)) {
    if (!body.empty()) body += ",";
    body += std::string(list.name) + "=LIST(";
    for (std::size_t i = 0; i < list.items.size(); ++i)
      body += (i ? "," : "") + std::string(list.items[i].key) + std::to_string(list.items[i].value);
    body += ")";
  }
  return body.empty() ? "" : "#return LIST(" + body + ")";
}

void SendColorValues(HostLink* host, const ColorTableArray& table) {
  if (!host) return;
  const std::string expression = ColorListExpression(table);
  if (!expression.empty()) HostCall(host, kHostEvaluateAndNotify, expression);
}

ColorTableArray GetColorsByIndexTable(Platform& platform, const ColorSchemeModule& module, ColorTableState& state) {
  Refresh(platform, module, state);
  return state.ColorIndexValue;
}

std::int32_t GetColorByIndex(Platform& platform, const ColorSchemeModule& module, ColorTableState& state,
                             int index) {
  Refresh(platform, module, state);
  return index >= 0 && index < kClutIndexCount ? state.ColorIndexValue[index] : kButtonFaceGrey;
}

void SendColorValues(Platform& platform, const ColorSchemeModule& module, ColorTableState& state) {
  if (HostLink* host = platform.Host()) SendColorValues(host, GetColorsByIndexTable(platform, module, state));
}

}  // namespace tq
