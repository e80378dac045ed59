#ifndef KY_TEST_JAPAN_H
#define KY_TEST_JAPAN_H

#include "jistext.h"
#include "ydic.h"

#include <QString>
#include <QStringList>

/** The dictionary of all Japan, open. */
class Japan
{
public:
    static constexpr uint32_t Most = 100; ///< results of a search

    Japan() { m_info.dictFile = fopen(KY_POSTAL_DICTIONARY, "rb"); }
    ~Japan()
    {
        if (isOpen())
            fclose(m_info.dictFile);
    }
    Q_DISABLE_COPY_MOVE(Japan)

    [[nodiscard]] bool isOpen() const { return m_info.dictFile != nullptr; }
    [[nodiscard]] ydic_info *info() { return &m_info; }

    /** The addresses of a code, as the search gives them; one line with the failure when it fails. */
    [[nodiscard]] QStringList addressesOf(const QString &code)
    {
        static char results[Most * (YDIC_ADDRESS_LENGTH + 1)];
        return texts(Zip2AdrSearch(code.toLatin1(), Most, results, &m_info), results);
    }

    /** The codes that an address leads to. */
    [[nodiscard]] QStringList codesOf(std::u16string_view address)
    {
        static char results[Most * 8];
        const std::string jis = ZipDict::toJis(address).value_or(std::string());
        const int count = Adr2ZipSearch(jis.c_str(), Most, results, &m_info);
        QStringList codes;
        for (int i = 0; i < count; ++i)
            codes.append(QLatin1String(results + 8 * i));
        return codes;
    }

private:
    static QStringList texts(int count, const char *results)
    {
        if (count < 0)
            return {QStringLiteral("failure %1").arg(count)};
        QStringList list;
        for (const char *at = results; count > 0; --count) {
            const std::string_view jis(at);
            list.append(QString::fromStdU16String(ZipDict::fromJis(jis)));
            at += jis.size() + 1;
        }
        return list;
    }

    ydic_info m_info = {};
};

#endif
