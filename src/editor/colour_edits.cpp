// The editor's editing comforts in the model: a colour set on one row, a row reset to
// its factory colour, undo and redo. Additions beside the editor's own commands; the
// window offers them on a colour button's context menu and on keys.
#include "colortable/clut_locations.h"
#include "editor/session.h"

namespace tq {

bool frmTqColorSetting::SetRowColour(int row, std::int32_t colour) {
  const int index = RowIndex(row);
  if (!enablement_.colour_buttons || index < 0) return false;
  ColorPicked(row, colour & 0xFFFFFF);
  return true;
}

std::optional<std::int32_t> frmTqColorSetting::FactoryColour(int row) {
  const int index = RowIndex(row);
  if (index < 0) return std::nullopt;
  ColorTableState factory = table_;
  factory.ClutFileName = RestoreDefaultsSource(*platform_, ClutFileName());
  if (!platform_->FileExists(factory.ClutFileName)) return std::nullopt;
  // Quiet: the menu asks while it opens; a copy that cannot be read greys the item.
  if (!LoadColorTable(*platform_, schemes_, factory, true, LoadReport::Quiet())) return std::nullopt;
  const RowColour& shown = factory.rows[index];
  if (shown.kind != RowColour::Kind::Colour) return std::nullopt;
  return shown.colour;
}

bool frmTqColorSetting::ResetRowToFactory(int row) {
  if (!enablement_.colour_buttons) return false;
  const std::optional<std::int32_t> colour = FactoryColour(row);
  return colour && SetRowColour(row, *colour);
}

bool frmTqColorSetting::Undo() {
  if (!CanUndo()) return false;
  history_.Undo(ColourRows::Of(table_))->ApplyTo(table_);
  ColorsChanged = true;  // the file no longer holds what is shown
  if (view_ && loaded_) view_->RowChanged(-1);
  return true;
}

bool frmTqColorSetting::Redo() {
  if (!CanRedo()) return false;
  history_.Redo(ColourRows::Of(table_))->ApplyTo(table_);
  ColorsChanged = true;
  if (view_ && loaded_) view_->RowChanged(-1);
  return true;
}

std::vector<frmTqColorSetting::RowMatch> frmTqColorSetting::FindRows(const std::string& text) {
  std::vector<RowMatch> found;
  const std::string wanted = platform_->UpperCase(text);
  if (wanted.find_first_not_of(' ') == std::string::npos) return found;
  const bool number = wanted.find_first_not_of("0123456789") == std::string::npos && wanted.size() <= 4;
  const std::vector<int>& strip = selection_.Strip();
  for (int position = 0; position < static_cast<int>(strip.size()); ++position) {
    const TabPage& page = kTabPages[strip[position]];
    for (int frame = 0; frame < page.frame_count; ++frame) {
      // The first category item that shows the frame; a frame no item shows is never seen.
      int category = page.category_count > 0 ? -1 : 0;
      for (int item = 0; item < page.category_count && category < 0; ++item)
        if (ShownFrame(strip[position], item) == frame) category = item;
      if (category < 0 || (page.category_count == 0 && frame > 0)) continue;
      const CategoryFrame& rows = page.frames[frame];
      for (int row = rows.first_row; row < rows.first_row + rows.row_count; ++row) {
        const int index = RowIndex(row);
        if (index < 0) continue;
        const bool hit = (number && index == std::stoi(wanted)) ||
                         platform_->UpperCase(RowName(strings_, row, voltage_names_)).find(wanted) != std::string::npos;
        if (hit) found.push_back({position, page.category_count > 0 ? category : -1, row});
      }
    }
  }
  return found;
}

}  // namespace tq
