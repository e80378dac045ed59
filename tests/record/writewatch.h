#ifndef WRITEWATCH_H
#define WRITEWATCH_H

#include <QByteArrayList>

/**
 * Watches the items that are written to cards, and makes a write fail on demand. The operation of the store
 * is defined in this test program, so that libky calls it first, and goes on to the store.
 */
namespace WriteWatch {

/** Forgets what was written, and the fault. */
void reset();

/** The codes of the items written since reset(), in order; that of a failed write is the last. */
QByteArrayList codes();

/** Writes of this item fail, and the store isn't asked. */
void fail(const QByteArray &code);

} // namespace WriteWatch

#endif
