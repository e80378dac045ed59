#ifndef SYNCHRONISATIONS_H
#define SYNCHRONISATIONS_H

/** How often this process has waited for the disk: fsync and fdatasync are defined in the test program, which
 * counts them and goes on to the system. */
int &synchronisations();

#endif
