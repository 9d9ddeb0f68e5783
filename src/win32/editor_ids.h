// The editor window's automation contract: window class and control ids.
//
// These ids never change: UI automation, our tests and screen readers find the
// editor's controls by them. The ids are unique among all descendants of the editor
// window (rows sit inside their page and frame, so look them up with a search over
// descendants such as EnumChildWindows, not with GetDlgItem on the top window).
// A page's rows exist from the first time the page is shown.
#pragma once

namespace tq::win::editor_ids {

// Top-level window class of the editor (owned by the host's window).
constexpr wchar_t kEditorClass[] = L"TqColorSettingEditor";

constexpr int kOk = 1;        // IDOK
constexpr int kCancel = 2;    // IDCANCEL
constexpr int kTabStrip = 900;             // SysTabControl32
constexpr int kCategoryLabel = 930;        // + page (0-11): the "Category:" label
constexpr int kCategoryCombo = 951;        // + page (0-11)
constexpr int kPagePanel = 970;            // + page (0-11): the page's container
constexpr int kFrame = 1050;               // + 3 * page + frame index: a category frame
constexpr int kSchemeCombo = 1100;
constexpr int kMoreButton = 1203;          // the ids of their captions' strings
constexpr int kSaveAsButton = 1208;
constexpr int kDeleteButton = 1209;
constexpr int kTagoutHeading = 1210;       // "Priorities (Severities)", bold
constexpr int kColorButton = 2000;         // + row (0-289); its text is the colour's name
constexpr int kRgbLabel = 2300;            // + row
constexpr int kNameLabel = 2600;           // + row

// The colour checks, added beside the editor's own controls (which they never cover).
// A row involved in a failed quality rule has a warning marker, a static in the free
// space left of its colour button: created only while the row has findings, its text
// (and tooltip) the findings in one line.
constexpr int kFindingMarker = 2900;       // + row

// The More menu's items (ids of their captions' strings).
constexpr int kImportItem = 1205;
constexpr int kExportItem = 1206;
constexpr int kRestoreDefaultsItem = 1207;
constexpr int kCheckColorsItem = 1600;     // opens the check window (an addition)

// The check window: modeless, owned by the editor and closed with it, one at a time.
// While its vision is not Normal, the editor's swatches are painted as that vision
// sees them (the RGB texts keep the stored values) and the title says so.
constexpr wchar_t kCheckClass[] = L"TqColorCheck";
constexpr int kFindingsList = 3001;        // SysListView32: rule, colours, measured, needed, vision
constexpr int kVisionCombo = 3002;         // Normal, Protanopia, Deuteranopia, Tritanopia
constexpr int kListPreview = 3003;         // the host's list displays in the edited colours
constexpr int kChecksSummary = 3004;       // "N findings in M rules" or "All checks pass"
constexpr int kFindingsLabel = 3005;
constexpr int kVisionLabel = 3006;
constexpr int kPreviewLabel = 3007;
constexpr int kCheckClose = 2;             // IDCANCEL, also Esc

// The Save As dialog (dlgSaveColorScheme): a standard dialog (#32770) owned by the
// editor, with OK and Cancel as IDOK and IDCANCEL.
constexpr int kSchemeNameLabel = 1402;     // "Color Scheme:"
constexpr int kSchemeNameEdit = 1405;      // txtColorScheme

// Additions beside the editor's own controls: the colour buttons' context menu (the
// ids of its items' strings), with Ctrl+C, Ctrl+V, Ctrl+Z, Ctrl+Y and Ctrl+F as keys.
constexpr int kCopyColorItem = 1620;
constexpr int kPasteColorItem = 1621;
constexpr int kEnterValueItem = 1622;
constexpr int kResetColorItem = 1623;      // to the colour in the restore copy
constexpr int kUndoItem = 1624;
constexpr int kRedoItem = 1625;
constexpr int kFindItem = 1626;

// The Enter Value dialog: a standard dialog (#32770) owned by the editor, OK and
// Cancel as IDOK and IDCANCEL (OK disabled while the text names no colour).
constexpr int kValueLabel = 1628;          // the formats it takes
constexpr int kValueEdit = 1629;
constexpr int kValueSwatch = 1630;         // the typed colour

// The find box: a modeless standard dialog (#32770) owned by the editor.
constexpr int kFindLabel = 1671;           // "Name or index:"
constexpr int kFindEdit = 1672;

}  // namespace tq::win::editor_ids
