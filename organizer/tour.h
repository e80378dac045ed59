#ifndef TOUR_H
#define TOUR_H

#include <QString>

class MainWindow;

/** Shows every page of the Organizer: a picture of each in @p folder, and a line of what it shows on standard
 * output. @return false when a picture could not be written */
bool takeTour(MainWindow &window, const QString &folder);

#endif
