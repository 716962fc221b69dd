#pragma once

#include "ControlTable.h"
#include "Workbench.h"

class QWidget;

namespace ovka::desktop {

class DocumentFace;
class SetupWindow;

/// What a page has beyond the controls of the table: the choice of ports, the preset's file name,
/// the lists of annotations and of recordings to recover, the state of the journal. nullptr: the
/// page has nothing more.
[[nodiscard]] QWidget* makeOwnPart(SetupPage page, Workbench& bench, DocumentFace& documents,
                                   SetupWindow& window);

/// A point of the recording as its time.
[[nodiscard]] QString pointText(std::int64_t point);
/// Date, length and size of a journaled recording.
[[nodiscard]] QString journalText(Workbench& bench, const JournalSession& session);

}  // namespace ovka::desktop
