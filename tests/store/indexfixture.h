#ifndef TESTS_INDEXFIXTURE_H
#define TESTS_INDEXFIXTURE_H

#include "environment.h"
#include "indexfamily.h"
#include "indexfile.h"
#include "recordbuilder.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QTemporaryDir>
#include <QtTest>

/** Bytes of expressions, with their terminator. */
namespace expression {

inline QByteArray sortKey(const char *code, uint8_t op)
{
    return QByteArray(code, 4) + '\xFE' + static_cast<char>(op);
}
inline QByteArray sortBy(const char *code, uint8_t op)
{
    return sortKey(code, op) + '\0';
}
inline QByteArray category(uint8_t id)
{
    return raw("CTGR\xFE\x92\x0C") + static_cast<char>(id) + '\0';
}
inline QByteArray text(const char *code, uint8_t op, const QByteArray &value)
{
    return QByteArray(code, 4) + '\xFE' + static_cast<char>(op) + '\x11' + value + '\0';
}
inline QByteArray number(const char *code, uint8_t op, uint16_t value)
{
    return QByteArray(code, 4) + '\xFE' + static_cast<char>(op) + '\x08' + native(value) + '\0';
}

constexpr uint8_t Equal = 0x90;
constexpr uint8_t Contains = 0x92;
constexpr uint8_t TextAscending = 0x80;
constexpr uint8_t TextDescending = 0x81;
constexpr uint8_t Ascending = 0x82;
constexpr uint8_t Descending = 0x83;

} // namespace expression

using Cards = QList<uint16_t>;
constexpr uint8_t HiddenMask = 0x40;

/** A folder in memory where there is one, for tests that would spend their time waiting for the disk. */
class MemoryFolder
{
public:
    [[nodiscard]] QByteArray path() const { return QFile::encodeName(m_folder.path()) + '/'; }

private:
    QTemporaryDir m_folder{(QFileInfo("/dev/shm").isWritable() ? "/dev/shm" : QDir::tempPath()) +
                           "/kytest.XXXXXX"};
};

/** A box with the items NAME, TOWN, NUMB and CTGR, and whatever a test needs to do with it and its indexes.
 */
class TestBox
{
public:
    explicit TestBox(const QByteArray &name = "KYTEST.BOX", const QByteArray &folder = "F0:")
        : m_folder(folder), m_name(name), m_path(folder + name)
    {
        if (_BoxCreate(m_path, 0x54455354) != PdtmOk) {
            qFatal("can't create %s", m_path.constData());
        }
        QList<ITEMDATA> items;
        items << item("NAME", ItemTextUtf8, KindText) << item("TOWN", ItemTextUtf8, KindText)
              << item("NUMB", ItemUshort, KindUshort) << item("CTGR", ItemCategory, KindCategory);
        uint32_t added = 0;
        if (_BoxItemAppend(m_path, items.constData(), static_cast<int>(items.size()), &added) != PdtmOk) {
            qFatal("can't add items");
        }
        open();
    }
    ~TestBox()
    {
        close();
        for (const QByteArray &index : family()) {
            _IndexDelete(index);
        }
        _BoxDelete(m_path);
    }
    Q_DISABLE_COPY_MOVE(TestBox)

    [[nodiscard]] uint32_t handle() const { return m_handle; }
    [[nodiscard]] const QByteArray &path() const { return m_path; }
    [[nodiscard]] QByteArray at(const QByteArray &name) const { return m_folder + name; }
    [[nodiscard]] static QString file(const QByteArray &path)
    {
        return QFile::decodeName(QByteArray::fromStdString(pdtm::realPath(path)));
    }

    bool open(uint8_t mode = 0)
    {
        m_handle = _BoxOpenRwMode(m_path, mode);
        return m_handle != 0;
    }
    void close()
    {
        if (m_handle != 0) {
            _BoxClose(m_handle);
            m_handle = 0;
        }
    }
    /** As if another process opened the box: what indexes had in memory is gone. */
    void restart()
    {
        close();
        forgetMemory();
        open();
    }
    void forgetMemory() const { pdtm::family::boxDeleted(pdtm::realPath(m_path)); }

    /** @name Cards
     * @{ */
    uint16_t add(const QByteArray &name, uint16_t number = 0, const QByteArray &categories = {},
                 const QByteArray &town = {})
    {
        uint16_t work = PdtmWorkCard;
        _CardDelete(m_handle, work);
        if (_CardCreate(m_handle, &work) != PdtmOk) {
            return 0;
        }
        write(work, "NAME", name);
        write(work, "TOWN", town);
        write(work, "NUMB", native(number));
        write(work, "CTGR", categories);
        uint16_t card = 0;
        const PdtmStatus status = _CardCopy(m_handle, work, &card);
        _CardDelete(m_handle, work);
        return status == PdtmOk ? card : uint16_t{0};
    }
    PdtmStatus edit(uint16_t card, const char *code, const QByteArray &value)
    {
        uint16_t work = PdtmWorkCard;
        _CardDelete(m_handle, work);
        PdtmStatus status = _CardCopy(m_handle, card, &work);
        if (status == PdtmOk) {
            write(work, code, value);
            status = _CardCopy(m_handle, work, &card);
        }
        _CardDelete(m_handle, work);
        return status;
    }
    PdtmStatus write(uint16_t card, const char *code, const QByteArray &value)
    {
        const CardItemKey key = keyOf(card, code);
        return _CardWrite(m_handle, &key, value.constData(), static_cast<uint32_t>(value.size()));
    }
    PdtmStatus setAttribute(uint16_t card, uint8_t attribute)
    {
        return write(card, "ATTR", native(attribute));
    }
    static CardItemKey keyOf(uint16_t card, const char *code)
    {
        CardItemKey key{};
        key.card = card;
        std::copy_n(code, 4, key.code);
        return key;
    }
    /** @} */

    /** @name Indexes
     * @{ */
    [[nodiscard]] QList<QByteArray> family() const
    {
        QList<QByteArray> names;
        char name[256];
        uint32_t permanent = 0;
        while (_GetIndexName(m_path, static_cast<uint32_t>(names.size()) + 1, name, sizeof name,
                             &permanent) == PdtmOk) {
            names << name;
        }
        return names;
    }
    /** Makes an index of the box with what was asked for, not filled. */
    QByteArray describe(const QByteArray &name, const QByteArray &sort = {}, const QByteArray &search = {},
                        int kind = 17) const
    {
        const QByteArray index = at(name);
        const QByteArray boxName = m_name + '\0';
        PdtmStatus status = _IndexCreate(index, kind);
        if (status == PdtmOk) {
            status = writeInfo(index, InfoBoxName, boxName);
        }
        if (status == PdtmOk && !search.isEmpty()) {
            status = writeInfo(index, InfoSearchExpression, search);
        }
        if (status == PdtmOk && !search.isEmpty()) {
            status = writeInfo(index, InfoSubset, "\1");
        }
        if (status == PdtmOk && !sort.isEmpty()) {
            status = writeInfo(index, InfoSortExpression, sort);
        }
        if (status != PdtmOk) {
            qFatal("can't make index %s: %d", index.constData(), status);
        }
        return index;
    }
    /** An index of all cards. */
    QByteArray sorted(const QByteArray &name, const QByteArray &sort) const
    {
        const QByteArray index = describe(name, sort);
        _IndexUnGroup(index, m_handle);
        return index;
    }
    /** An index of the cards of a parent that match. */
    QByteArray grouped(const QByteArray &name, const QByteArray &parent, const QByteArray &search,
                       const QByteArray &sort = {}) const
    {
        const QByteArray index = describe(name, sort, search, 18);
        _IndexGroup(parent, index, m_handle);
        return index;
    }
    static PdtmStatus writeInfo(const QByteArray &index, int id, const QByteArray &info)
    {
        return _IndexInfoWrite(index, id, info.constData(), static_cast<uint16_t>(info.size()));
    }
    /** The information, or null when there is none. */
    static QByteArray info(const QByteArray &index, int id)
    {
        char buffer[PdtmInfoRoom];
        uint16_t size = sizeof buffer;
        return _IndexInfoRead(index, id, buffer, &size) == PdtmOk ? QByteArray(buffer, size) : QByteArray();
    }
    /** @} */

    static ITEMDATA item(const char *code, uint8_t type, uint8_t kind)
    {
        ITEMDATA data{};
        data.type = type;
        data.kind = kind;
        std::copy_n(code, 4, data.code);
        return data;
    }

private:
    QByteArray m_folder;
    QByteArray m_name;
    QByteArray m_path;
    uint32_t m_handle = 0;
};

/** The visible cards of an index, walked forward. */
inline Cards cardsOf(const QByteArray &index)
{
    Cards cards;
    uint16_t number = 0;
    uint16_t card = 0;
    while (_NextIndexNo(index, HiddenMask, 0, 0, &number) == PdtmOk &&
           _IndexNoToCardID(index, number, &card) == PdtmOk) {
        cards << card;
    }
    return cards;
}

/** All cards of an index by number. */
inline Cards allCardsOf(const QByteArray &index)
{
    Cards cards;
    uint16_t card = 0;
    for (uint16_t number = 1; _IndexNoToCardID(index, number, &card) == PdtmOk; ++number) {
        cards << card;
    }
    return cards;
}

/** The file of an index, byte by byte. */
inline QByteArray contentsOf(const QByteArray &index)
{
    QFile file(TestBox::file(index));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void replaceContents(const QByteArray &index, const QByteArray &bytes)
{
    QFile file(TestBox::file(index));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("can't write the file");
    }
}

inline PdtmStatus check(const QByteArray &index)
{
    return pdtm::checkIndexFile(pdtm::realPath(index));
}

#endif
