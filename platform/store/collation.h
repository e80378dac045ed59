#ifndef PDTM_COLLATION_H
#define PDTM_COLLATION_H

#include <cstdint>
#include <string>
#include <string_view>

namespace pdtm {

/**
 * The text order of a language. ICU is loaded when the first one is asked for; when that fails texts order by
 * their bytes, and one warning goes to the standard error stream.
 */
class Collation
{
public:
    virtual ~Collation() = default;

    /** The collation of a language code, made once a process. */
    static const Collation &forLanguage(const std::string &language);

    /** Appends the collation key of a UTF-8 text: no 0 byte in it, and one behind it. Malformed text counts
     * as U+FFFD where it is. */
    virtual void appendKey(std::string_view utf8, std::string &out) const = 0;
};

/** Version of the rules that keys are made by: that of the ICU this library is built for, 0 when it turned
 * out that it can't be loaded. Loads nothing itself, since opening an index needs it. */
[[nodiscard]] uint32_t collationRulesVersion();

/** Appends bytes so that they order as they are, a prefix first: no 0 byte in them, and one behind them. */
void appendDelimited(std::string_view bytes, std::string &out);

} // namespace pdtm

#endif
