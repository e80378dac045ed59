#ifndef SAMPLES_H
#define SAMPLES_H

class MainWindow;

/** Fills those boxes of the pages that are empty with samples, filed under a few categories. @return false
 * when something could not be saved */
bool addSamples(MainWindow &window);

#endif
