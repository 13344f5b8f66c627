// CCommonGUIStrings: the texts of the shared dialogs (About, Feedback, update check, manual) and the
// few window texts beyond the options-window table, stored like COstrexStrings: one block of
// NUL-terminated strings, an offset table, lookup arrays built on first use; British English only.
// Texts with %1, %2 are QString::arg patterns.
#pragma once

#include <QString>

class CCommonGUIStrings
{
  public:
    enum EStringVals
    {
        eStrExportBoneGeometry = 0,
        eStrExportBoneGeometryTip,
        eStrOptionsTitle,
        eStrOutputTitle,
        eStrRecentFiles,
        eStrNoRecentFiles,
        eStrCheckForUpdates,
        eStrNoUpdater,
        eStrUpdaterFailed,
        eStrAboutTitle,
        eStrAboutText,
        eStrFeedbackTitle,
        eStrFeedbackText,
        eStrCopyText,
        eStrManualMissing,
        eStrManualOpenFailed,
        eStrLocateViewer,
        eStrReadOnly,
        eStrStudioProfileTip,
        eStrReadOptionsFailed,
        eStrDisarmedActions,
        eStrOpenScene,
        eStrExportScene,
        eStrNoScene,
        eStrSceneUnreadable,
        eStrViewerMissing,
        eStrOpenInTvoview,
        eStrScene,
        eNumStrings
    };

    // Text of index n; an index out of range yields the empty string.
    static const QString& QtText(int n);
};
