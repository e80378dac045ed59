#include "collation.h"

#include <array>
#include <cstdio>
#include <dlfcn.h>
#include <map>
#include <memory>
#include <unicode/ucol.h>
#include <unicode/ustring.h>
#include <unicode/uvernum.h>
#include <vector>

namespace pdtm {

namespace {

#define KY_TEXT_OF(name) #name
/** ICU's headers rename each function to one with the version in its name; this gives that name. */
#define KY_ICU_SYMBOL(name) KY_TEXT_OF(name)

/** The functions of ICU that are used, from libraries loaded at first use. */
struct Icu
{
    decltype(&ucol_open) open = nullptr;
    decltype(&ucol_getSortKey) sortKey = nullptr;
    decltype(&u_strFromUTF8WithSub) fromUtf8 = nullptr;

    /** Null when ICU can't be loaded. */
    static const Icu *instance()
    {
        static const Icu icu;
        return icu.isComplete() ? &icu : nullptr;
    }
    static bool s_failed;

private:
    Icu()
    {
        void *common = dlopen("libicuuc.so." U_ICU_VERSION_SHORT, RTLD_LAZY | RTLD_LOCAL);
        void *international = dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_LAZY | RTLD_LOCAL);
        resolve(fromUtf8, common, KY_ICU_SYMBOL(u_strFromUTF8WithSub));
        resolve(open, international, KY_ICU_SYMBOL(ucol_open));
        resolve(sortKey, international, KY_ICU_SYMBOL(ucol_getSortKey));
    }
    [[nodiscard]] bool isComplete() const { return open && sortKey && fromUtf8; }

    template <typename Function> static void resolve(Function &function, void *library, const char *name)
    {
        if (library)
            function = reinterpret_cast<Function>(dlsym(library, name));
    }
};
bool Icu::s_failed = false;

class ByteOrder : public Collation
{
public:
    void appendKey(std::string_view utf8, std::string &out) const override { appendDelimited(utf8, out); }
};

class IcuCollation : public Collation
{
public:
    IcuCollation(const Icu &icu, UCollator *collator) : m_icu(icu), m_collator(collator) {}

    void appendKey(std::string_view utf8, std::string &out) const override
    {
        if (utf8.empty()) {
            out += '\0';
            return;
        }
        std::array<UChar, 256> buffer;
        if (utf8.size() <= buffer.size()) { // UTF-16 never has more units than UTF-8 has bytes
            appendKeyOf(buffer.data(), decode(utf8, buffer.data(), buffer.size()), out);
            return;
        }
        std::vector<UChar> units(utf8.size());
        appendKeyOf(units.data(), decode(utf8, units.data(), units.size()), out);
    }

private:
    int32_t decode(std::string_view utf8, UChar *units, size_t room) const
    {
        UErrorCode status = U_ZERO_ERROR;
        int32_t length = 0;
        m_icu.fromUtf8(units, static_cast<int32_t>(room), &length, utf8.data(),
                       static_cast<int32_t>(utf8.size()), 0xFFFD, nullptr, &status);
        return length;
    }

    void appendKeyOf(const UChar *units, int32_t length, std::string &out) const
    {
        std::array<uint8_t, 512> buffer;
        const auto room = static_cast<int32_t>(buffer.size());
        const int32_t needed = m_icu.sortKey(m_collator, units, length, buffer.data(), room);
        if (needed <= room) {
            out.append(reinterpret_cast<const char *>(buffer.data()), static_cast<size_t>(needed));
            return;
        }
        const size_t before = out.size();
        out.resize(before + static_cast<size_t>(needed));
        m_icu.sortKey(m_collator, units, length, reinterpret_cast<uint8_t *>(out.data() + before), needed);
    }

    const Icu &m_icu;
    UCollator *m_collator;
};

std::unique_ptr<const Collation> makeCollation(const std::string &language)
{
    UErrorCode status = U_ZERO_ERROR;
    const Icu *icu = Icu::instance();
    UCollator *collator = icu ? icu->open(language.c_str(), &status) : nullptr;
    if (collator && U_SUCCESS(status))
        return std::make_unique<IcuCollation>(*icu, collator);
    if (!Icu::s_failed)
        std::fputs("libpdtm: ICU can't be loaded, texts are ordered by their bytes\n", stderr);
    Icu::s_failed = true;
    return std::make_unique<ByteOrder>();
}

} // namespace

const Collation &Collation::forLanguage(const std::string &language)
{
    // They live as long as the process: boxes are closed by what runs at its end, too.
    static auto &collations = *new std::map<std::string, std::unique_ptr<const Collation>>;
    std::unique_ptr<const Collation> &collation = collations[language];
    if (!collation)
        collation = makeCollation(language);
    return *collation;
}

uint32_t collationRulesVersion()
{
    return Icu::s_failed ? 0 : U_ICU_VERSION_MAJOR_NUM << 8 | U_ICU_VERSION_MINOR_NUM;
}

void appendDelimited(std::string_view bytes, std::string &out)
{
    for (const char byte : bytes) {
        if (byte == 0 || byte == 1)
            out += {'\1', static_cast<char>(byte + 1)};
        else
            out += byte;
    }
    out += '\0';
}

} // namespace pdtm
