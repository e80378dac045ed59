#ifndef STOREFAULTS_H
#define STOREFAULTS_H

#include "pdtm.h"
#include <QStringList>

/**
 * Watches the operations of the record store that make files, and makes them fail on demand. They are defined
 * in this test program, so that libky calls them first, and go on to the store.
 *
 * A call is written as its name, the paths without `F0:`, and the numbers that tell it from others:
 * "_BoxCreate T.BOX", "_IndexInfoWrite T.IDX 3", "_IndexGroup T.IDX T1.IDX".
 */
namespace StoreFaults {

/** Forgets calls and faults. */
void reset();

/** Every call that begins with @p call gives this status, and the store isn't asked. */
void force(const QString &call, PdtmStatus status);

/** The calls since reset(), those of the store to itself left out. */
QStringList calls();

/** Kills this process with SIGKILL right before call number @p number, counted from 0. */
void killBefore(int number);

} // namespace StoreFaults

#endif
