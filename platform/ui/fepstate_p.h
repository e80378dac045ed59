#ifndef KY_FEPSTATE_P_H
#define KY_FEPSTATE_P_H

#include "kyexport.h"
#include <optional>
#include <QString>

/**
 * The input method's state as kyplatformd keeps it: a small settings file in the runtime folder of the
 * profile, so that asking for it costs no message.
 */
struct KY_EXPORT FepState
{
    bool on = false;        ///< what is typed goes through the front-end processor
    bool switchable = true; ///< it may be switched on now
    bool visible = false;   ///< the input method is shown
    int mode = 0;           ///< a number of the input method's own
    QString method;         ///< name of the input method; empty for none in particular

    bool operator==(const FepState &other) const = default;

    /** Path of the file. */
    [[nodiscard]] static QString file();
    /** Nothing where there is no file. */
    [[nodiscard]] static std::optional<FepState> read();
    /** Replaces the file. @return false when that failed */
    bool write() const;
};

#endif
