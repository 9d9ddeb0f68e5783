// What the editor exchanges with the host application: the voltage-level names for
// the level rows, the colour values of the host's list displays, and the colour
// table as the host reads it.
//
// The host may answer anything. A reply that is not what an exchange expects (a
// number for a vector, nested vectors, a failed status) counts as no reply; nothing
// here throws or tells the user.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "colortable/color_table.h"
#include "editor/catalogue.h"
#include "support/host.h"

namespace tq {

class Platform;

// ---- Voltage levels ------------------------------------------------------------

// The host's power levels; the third element of its reply is the vector of levels.
constexpr const char* kVoltageLevelsExpression = "#return network_topology_manager(\"LEVELS\", \"POWER\")";
// The translation request for n levels: keys "SYS_NT_POWER_LX_0" .. "SYS_NT_POWER_LX_<n-1>".
std::string VoltageNamesExpression(std::size_t level_count);

// Asks the host for the levels and then for their names (both with Evaluate). Keeps
// at most the first 20 names; numbers given as names become their text. Without a
// host or a readable first reply, no levels (count 0); when only the names fail,
// count is the number of levels + 1 (see VoltageLevels).
VoltageLevels FetchVoltageLevels(HostLink* host);

// ---- Colour lists --------------------------------------------------------------

// The colour lists of the host's list displays, as they are sent: each list ("AL1",
// "EL", ...) with its keys ("BG=", "TXT=", ...) and values, in the order sent; lists
// without a colour to send are left out. The editor's preview paints from these too.
struct ColorList {
  std::string_view name;
  struct Item {
    std::string_view key;
    std::int32_t value;
  };
  std::vector<Item> items;
};
std::vector<ColorList> ColorLists(const ColorTableArray& table);
// "#return LIST(AL1=LIST(BG=...),...)" from ColorLists; "" when no colour is to be sent.
std::string ColorListExpression(const ColorTableArray& table);
// Sends the expression with host call 6 (evaluate, then "ColorSchemeLoaded");
// nothing without a host or without colours to send.
void SendColorValues(HostLink* host, const ColorTableArray& table);

// ---- The session's table, as the host reads it ---------------------------------

// Re-read the colour table file into ColorIndexValue (unless ClutError), then the
// copy of the table, or one entry (kButtonFaceGrey for an index outside 0-285).
ColorTableArray GetColorsByIndexTable(Platform& platform, const ColorSchemeModule& module, ColorTableState& state);
std::int32_t GetColorByIndex(Platform& platform, const ColorSchemeModule& module, ColorTableState& state, int index);
// The colour lists of the freshly read table to this thread's host; nothing without one.
void SendColorValues(Platform& platform, const ColorSchemeModule& module, ColorTableState& state);

}  // namespace tq
