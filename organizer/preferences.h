#ifndef PREFERENCES_H
#define PREFERENCES_H

#include <QColor>
#include <QString>

/** What the user has chosen for the Organizer. Kept in the settings file "kyorganizer". */
struct Preferences
{
    /** Where the diagnostic lines go. */
    enum LogTarget { LogToTerminal = 0, LogToFile = 1, NoLog = 2 };

    int fontSize = 0; ///< logical, as KyMisc::getFontPointSize() has it
    QColor highlight; ///< of what is selected; invalid for that of the desktop
    LogTarget log = LogToTerminal;

    bool operator==(const Preferences &other) const = default;

    [[nodiscard]] static Preferences load();
    /** @return false when they could not be kept */
    [[nodiscard]] bool save() const;
    /** Puts them into effect, in all windows and at once. */
    void apply() const;

    /** File that the diagnostic lines go to; empty when it is none. */
    [[nodiscard]] static QString logFile();
};

#endif
