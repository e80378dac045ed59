#ifndef PDTM_BOXFILE_H
#define PDTM_BOXFILE_H

#include "record.h"

#include <functional>
#include <memory>
#include <string>

namespace pdtm {

/**
 * A box that this process has open, under one handle or several: one database connection, the lock of mode 0
 * while some handle holds it, the scratch cards, and the cards read so far.
 *
 * Index code uses only what stands here.
 */
class BoxFile
{
public:
    virtual ~BoxFile() = default;

    /** The box behind a handle; null for a handle that is not open. */
    static std::shared_ptr<BoxFile> ofHandle(uint32_t handle);
    /** The box of a real path if this process has it open under any handle, else null. */
    static std::shared_ptr<BoxFile> ifOpen(const std::string &realPath);

    /** Real path of the box file. */
    [[nodiscard]] virtual const std::string &path() const = 0;
    [[nodiscard]] virtual const Schema &schema() const = 0;
    /** This process holds the box in mode 0, so that nobody else changes it. */
    [[nodiscard]] virtual bool isHeld() const = 0;

    /** Counts every change of cards and items; rises with the change itself, so that inside an action it is
     * ahead of the file. Constant time while held, one small read otherwise. 0: it can't be read. */
    virtual uint64_t changeCounter() = 0;

    /** Visits all ordinary cards by rising id in one consistent state. The view is valid inside the call.
     * False when the box can't be read to its end; the visit ends early when it returns false. */
    virtual bool forEachCard(const std::function<bool(CardId, RecordView)> &visit) = 0;

    /** Reads a card, scratch cards of this process included. The view is valid until the next call on the
     * box. PdtmNoSuchCard, PdtmIoError */
    virtual PdtmStatus readCard(CardId card, RecordView &record) = 0;
};

} // namespace pdtm

#endif
