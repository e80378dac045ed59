#include "boxfixture.h"

#include <cstdlib>
#include <new>
#include <QtTest>

namespace {

/** Allocations that the store may still make; negative: any number. */
int s_allowed = -1;

void *allocate(size_t size)
{
    if (s_allowed == 0)
        throw std::bad_alloc();
    if (s_allowed > 0)
        --s_allowed;
    void *memory = std::malloc(size ? size : 1);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

} // namespace

void *operator new(size_t size)
{
    return allocate(size);
}
void *operator new[](size_t size)
{
    return allocate(size);
}
void operator delete(void *memory) noexcept
{
    std::free(memory);
}
void operator delete[](void *memory) noexcept
{
    std::free(memory);
}
void operator delete(void *memory, size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void *memory, size_t) noexcept
{
    std::free(memory);
}

using namespace boxfixture;

/** Memory runs out at every place where an operation asks for some. */
class MemoryTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void changes();
    void actions();
    void boxOperations();

private:
    /** Runs an operation with ever more memory until it succeeds; its other statuses must be PdtmTooShort. */
    template <typename Operation> bool succeedsInTheEnd(Operation operation);
    uint32_t m_handle = 0;
    static constexpr const char *Box = "F0:MEMORY.BOX";
};

template <typename Operation> bool MemoryTest::succeedsInTheEnd(Operation operation)
{
    constexpr int ManyAllocations = 2000;
    for (int allowed = 0; allowed < ManyAllocations; ++allowed) {
        s_allowed = allowed;
        const PdtmStatus status = operation();
        s_allowed = -1;
        if (status == PdtmOk)
            return allowed > 0;
        if (status != PdtmTooShort)
            return false;
    }
    return false;
}

void MemoryTest::init()
{
    QCOMPARE(makeBox(Box), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(Box, 0);
    QCOMPARE(addCard(m_handle, "first"), uint16_t(1));
}

void MemoryTest::cleanup()
{
    s_allowed = -1;
    _BoxClose(m_handle);
    QCOMPARE(_BoxDelete(Box), PdtmStatus(PdtmOk));
}

void MemoryTest::changes()
{
    const CardItemKey name = key(1, "NAPR");
    const QByteArray value(1000, 'n');
    QVERIFY(succeedsInTheEnd([&] { return _CardWrite(m_handle, &name, value.constData(), 1000); }));
    QCOMPARE(read(m_handle, 1, "NAPR"), value);
    uint16_t card = 0;
    QVERIFY(succeedsInTheEnd([&] { return _CardCopy(m_handle, 1, &card); }));
    QCOMPARE(card, uint16_t(2));
    QVERIFY(succeedsInTheEnd([&] { return _CardAllDelete(m_handle, 0, 0, 0); }));
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(sql(internalPath("MEMORY.BOX"), "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("0"));
}

void MemoryTest::actions()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    QVERIFY(addCard(m_handle, "undone"));
    const CardItemKey name = key(1, "NAPR");
    const QByteArray value(1000, 'n');
    s_allowed = 0;
    const PdtmStatus failed = _CardWrite(m_handle, &name, value.constData(), 1000);
    s_allowed = -1;
    QCOMPARE(failed, PdtmStatus(PdtmTooShort));
    QCOMPARE(write(m_handle, 1, "NAPR", "behind the failure"), PdtmStatus(PdtmTooShort));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmTooShort));
    QCOMPARE(read(m_handle, 2, "NAPR"), QByteArray("status 65"));
    QCOMPARE(write(m_handle, 1, "NAPR", "saved"), PdtmStatus(PdtmOk));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmBadArgument)); // none is open
    _BoxClose(m_handle);
    QCOMPARE(sql(internalPath("MEMORY.BOX"), "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("1"));
    m_handle = _BoxOpenRwMode(Box, 0);
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("saved"));
}

void MemoryTest::boxOperations()
{
    _BoxClose(m_handle);
    uint32_t size = 0;
    QVERIFY(succeedsInTheEnd([&] { return _BoxGarbageCollect(Box); }));
    QVERIFY(succeedsInTheEnd([&] { return _GetBoxGarbageSize(Box, &size); }));
    QVERIFY(succeedsInTheEnd([&] { return _DTMFileCheckAppliID(Box, 3, ApplicationId); }));
    QVERIFY(succeedsInTheEnd([&] { return _DTMFileCheckLevel(Box, 255); }));
    const ITEMDATA late = itemData(ItemUshort, KindUshort, "LATE", "");
    QVERIFY(succeedsInTheEnd([&] { return _BoxItemAppend(Box, &late, 1, nullptr); }));
    QVERIFY(succeedsInTheEnd([&] {
        m_handle = _BoxOpenRwMode(Box, 0);
        return m_handle ? PdtmOk : PdtmTooShort;
    }));
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("first"));
}

QTEST_GUILESS_MAIN(MemoryTest)
#include "memorytest.moc"
