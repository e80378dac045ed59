#ifndef SAMPLES_H
#define SAMPLES_H

class MainWindow;

/** Fills those boxes of the pages that are empty with samples, filed under a few categories. @return false
 * when something could not be saved */
bool addSamples(MainWindow &window);

/** Most contacts that addSampleContacts() makes. */
inline constexpr int MostSampleContacts = 50000;

/** Fills an empty address book with invented contacts. @return false when they could not be saved */
bool addSampleContacts(MainWindow &window, int count);

#endif
