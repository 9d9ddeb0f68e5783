// Names of the string IDs that the code uses one by one (resources/strings/EN.txt
// holds the texts). IDs computed from a row, a page or a category are in
// editor/catalogue.h; the lock texts are a range (locking/lock_file.h).
#pragma once

namespace tq::sid {

// Buttons and menu items of the editor.
constexpr int kOk = 1201;
constexpr int kCancel = 1202;
constexpr int kMore = 1203;
constexpr int kSaveAs = 1208;
constexpr int kDelete = 1209;

// Captions and messages.
constexpr int kTitle = 1301;                 // "Color Setting Tool"
constexpr int kTitleReadOnly = 1302;         // "... (Read-Only)"
constexpr int kUnreadable = 1303;            // a row whose colour cannot be read
constexpr int kNotDefined = 1304;            // a row whose colour is not in the table
constexpr int kTableNotFound = 1305;         // + path
constexpr int kCannotSave = 1306;
constexpr int kTableFile = 1309;             // + path + kNotLocked + kSaveChanges
constexpr int kNotLocked = 1310;
constexpr int kSaveChanges = 1311;
constexpr int kCannotWrite = 1312;           // + path + reason + kPreviousUnchanged
constexpr int kPreviousUnchanged = 1313;
constexpr int kNoDVHome = 1315;
constexpr int kCannotRead = 1316;            // + path + reason
constexpr int kRestoreDefaultsQuestion = 1317;
constexpr int kColorsFor = 1318;             // + scheme + kChangedSaveQuestion
constexpr int kChangedSaveQuestion = 1319;
constexpr int kTooManySchemes = 1320;
constexpr int kDeleteQuestion = 1321;        // + scheme + kDeleteQuestionEnd
constexpr int kDeleteQuestionEnd = 1322;
constexpr int kNoAppFolder = 1323;
constexpr int kColorIndexTooltip = 1324;     // "Color index: " before the index
constexpr int kCannotUpdate = 1325;          // + path + kFrom + version + kTo + version + kNoReference
constexpr int kFrom = 1326;
constexpr int kTo = 1327;
constexpr int kNoReference = 1328;
constexpr int kImportTitle = 1329;
constexpr int kExportTitle = 1330;
constexpr int kIniFiles = 1331;
constexpr int kAllFiles = 1332;
constexpr int kWindowFailed = 1333;          // + the system's reason

// The session keeps its texts kTitle ... kAllFiles in the host's language.
constexpr int kFirstSessionText = kTitle;
constexpr int kLastSessionText = kAllFiles;

// The Save As dialog.
constexpr int kSaveSchemeTitle = 1401;
constexpr int kSchemeNameLabel = 1402;
constexpr int kSaveSchemeOk = 1403;
constexpr int kSaveSchemeCancel = 1404;
constexpr int kSchemeExists = 1451;          // name + " already exists. ..."
constexpr int kSchemeNameRefused = 1452;     // "name" + " cannot be used ..."

// Message-box buttons and the voltage rows' names.
constexpr int kBoxOk = 1551;
constexpr int kBoxYes = 1552;
constexpr int kBoxNo = 1553;
constexpr int kPowered = 1554;
constexpr int kExternal = 1555;

}  // namespace tq::sid
