#ifndef PDTM_INDEXFAMILY_H
#define PDTM_INDEXFAMILY_H

#include "boxfile.h"

#include <span>

/**
 * What the box tells the indexes of its family. All calls come after the change has been made to the box's
 * connection and its change counter has risen; inside an action they come before the commit.
 */
namespace pdtm::family {

/** A handle was opened: indexes kept in memory from an earlier opening are compared with the counter. */
void boxOpened(BoxFile &box);

/** An ordinary card was written: it enters, leaves or moves in every index of the family, of both kinds. An
 * index that has to be built anew reads the box; the view outlives that. */
void cardWritten(BoxFile &box, CardId card, RecordView record);

/** Only ATTR of an ordinary card was written: the attribute byte changes where the card stands. An index
 * whose order or condition goes by ATTR places the card anew. */
void attributeWritten(BoxFile &box, CardId card, RecordView record);

/** Ordinary cards were deleted: they leave every index. */
void cardsDeleted(BoxFile &box, std::span<const CardId> cards);

/** The box changed in a way that moves no card; loaded indexes take the new counter along. */
void counterChanged(BoxFile &box);

/** The open action was undone: what is in memory is to be rebuilt from the box at its next use. */
void rolledBack(BoxFile &box);

/** The last handle that may write is about to close: changed indexes are written to their files. */
void boxClosing(BoxFile &box);

/** The box file was deleted or made anew: nothing in memory belongs to it any more. */
void boxDeleted(const std::string &realPath);

} // namespace pdtm::family

#endif
