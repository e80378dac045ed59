#include "indexfamily.h"

#include "environment.h"
#include "indexregistry.h"

#include <exception>

namespace pdtm::family {

namespace {

IndexRegistry &registry()
{
    return IndexRegistry::instance();
}

/** Loads a member that isn't in memory, so that it is kept in step with the box from here on. One that is
 * stale already stays so, and unloaded. */
void loadMember(const Family &family, const std::string &path)
{
    if (registry().loaded(path) != nullptr) {
        return;
    }
    PdtmStatus status = PdtmOk;
    Index *index = registry().load(path, status);
    if (index != nullptr && !index->isCurrent(family.counter)) {
        registry().forget(path);
    }
}

void loadMembers(Family &family)
{
    const std::string folder = directoryPart(family.boxPath);
    const std::string boxName = family.boxPath.substr(folder.size());
    for (const std::string &name : familyNames(folder, boxName)) {
        loadMember(family, folder + name);
    }
    family.complete = true;
}

void invalidateAll(Family &family)
{
    for (Index *index : family.indexes) {
        index->invalidate();
    }
}

/** Runs what the box reports. When memory runs short the indexes are built anew at their next use. */
template <typename Work> void contained(BoxFile &box, Work work)
{
    Family *family = nullptr;
    try {
        family = &registry().familyOf(box);
        work(*family);
    } catch (const std::exception &) {
        if (family) {
            invalidateAll(*family);
        }
    }
    if (family) {
        family->counter = box.changeCounter();
    }
}

/** Applies a change of the box to each index that was current before it. */
template <typename Change> void apply(BoxFile &box, Change change)
{
    contained(box, [&](Family &family) {
        if (!family.complete && box.isHeld()) {
            loadMembers(family);
        }
        const uint64_t counter = box.changeCounter();
        for (Index *index : family.indexes) {
            if (index->isCurrent(family.counter)) {
                change(*index);
                index->takeCounter(counter);
            }
        }
    });
}

/** Compares an index in memory with its file and with the box after somebody else may have changed both. */
void review(Index &index, uint64_t counter)
{
    index.unbind();
    if (index.isOfOtherLanguage()) {
        index.invalidate();
    }
    const std::optional<FileStamp> stamp = stampOf(index.path());
    const bool keepsMemory = stamp && index.isDirty() && index.isCurrent(counter);
    if (!keepsMemory) {
        static_cast<void>(registry().rereadIfReplaced(index));
    }
}

/** Writes an index at the close of its box. When another process deleted or replaced the file meanwhile, that
 * stands. */
void writeAtClose(Index &index, BoxFile &box, uint64_t counter)
{
    if (!index.isDirty() || registry().rereadIfReplaced(index) != PdtmOk) {
        return;
    }
    if (index.isDirty() && index.isCurrent(counter)) {
        if (index.isOrderChanged()) {
            static_cast<void>(index.ensureKeys(box));
        }
        static_cast<void>(index.save());
    }
}

} // namespace

void boxOpened(BoxFile &box)
{
    contained(box, [&](Family &family) {
        const uint64_t counter = box.changeCounter();
        family.complete = false;
        const std::vector<Index *> indexes = family.indexes;
        for (Index *index : indexes) {
            review(*index, counter);
        }
    });
}

void cardWritten(BoxFile &box, CardId card, RecordView record)
{
    apply(box, [&](Index &index) { index.place(box, card, record); });
}

void attributeWritten(BoxFile &box, CardId card, RecordView record)
{
    apply(box, [&](Index &index) {
        if (index.goesByAttribute()) {
            index.place(box, card, record);
        } else {
            index.setAttribute(card, record.attribute());
        }
    });
}

void cardsDeleted(BoxFile &box, std::span<const CardId> cards)
{
    apply(box, [&](Index &index) { index.remove(cards); });
}

void counterChanged(BoxFile &box)
{
    apply(box, [](Index &) {});
}

void rolledBack(BoxFile &box)
{
    contained(box, invalidateAll);
}

void boxClosing(BoxFile &box)
{
    contained(box, [&](Family &family) {
        const uint64_t counter = box.changeCounter();
        const std::vector<Index *> indexes = family.indexes;
        for (Index *index : indexes) {
            writeAtClose(*index, box, counter);
        }
    });
}

void boxDeleted(const std::string &realPath)
{
    registry().forgetFamily(indexPath(realPath));
}

} // namespace pdtm::family
