#include "indexfixture.h"

#include <QProcess>

#include <algorithm>

using namespace expression;

namespace {

/** What the program does when it is started as another process: `--child COMMAND arguments`. */
int runChild(const QList<QByteArray> &arguments)
{
    const QByteArray &command = arguments[0];
    const QByteArray &path = arguments[1];
    if (command == "sort") { // BOX SOURCE INDEX: makes a temporary index by number
        const QByteArray sort = sortBy("NUMB", Ascending);
        const uint32_t handle = _BoxOpen(path);
        const bool done =
            handle != 0 &&
            _IndexCopy(arguments[2], arguments[3], 2, sort.constData(), int(sort.size())) == PdtmOk &&
            _IndexSort(arguments[3], handle) == PdtmOk;
        _BoxClose(handle);
        return done ? 0 : 1;
    }
    if (command == "edit") { // BOX CARD NAME
        const uint32_t handle = _BoxOpenRwMode(path, 0);
        uint16_t work = PdtmWorkCard;
        auto card = static_cast<uint16_t>(arguments[2].toUInt());
        _CardDelete(handle, work);
        if (_CardCopy(handle, card, &work) != PdtmOk) {
            return 1;
        }
        const CardItemKey key = TestBox::keyOf(work, "NAME");
        const bool done =
            _CardWrite(handle, &key, arguments[3].constData(), uint32_t(arguments[3].size())) == PdtmOk &&
            _CardCopy(handle, work, &card) == PdtmOk;
        _CardDelete(handle, work);
        return done && _BoxClose(handle) == PdtmOk ? 0 : 1;
    }
    if (command == "delete") { // INDEX
        return _IndexDelete(path) == PdtmOk ? 0 : 1;
    }
    if (command == "walk") { // BOX INDEX: the cards as a read-only process sees them, as result the first one
        const uint32_t handle = _BoxOpenRwMode(path, 1);
        const Cards cards = cardsOf(arguments[2]);
        _BoxClose(handle);
        return handle != 0 && !cards.isEmpty() ? int(cards.first()) : 0;
    }
    return 255;
}

int inOtherProcess(const QList<QByteArray> &arguments)
{
    QStringList words{"--child"};
    for (const QByteArray &argument : arguments) {
        words << QString::fromUtf8(argument);
    }
    return QProcess::execute(QCoreApplication::applicationFilePath(), words);
}

/** Tells a file that was written anew from one that was changed in place. */
uint64_t inodeOf(const QByteArray &index)
{
    const auto stamp = pdtm::stampOf(pdtm::realPath(index));
    return stamp ? stamp->inode : 0;
}

} // namespace

/** Indexes keep in step with their box, heal themselves, and are shared between processes. */
class IndexFamilyTest : public QObject
{
    Q_OBJECT

private slots:
    void cardsEnterMoveAndLeave();
    void createdAndOverwrittenCardsArePlaced();
    void bulkDeletionLeavesEveryIndex();
    void directCategoryChangesTouchNoIndex();
    void scratchCardsAreInNoIndex();
    void attributeOfAHiddenCardSurvives();
    void attributeMovesCardsWhereTheOrderGoesByIt();
    void attributeDecidesWhereTheConditionGoesByIt();
    void viewsKeepToTheirParents();
    void unwrittenChangesAreRebuilt();
    void closeWritesTheCounterAloneWhereNoCardMoved();
    void closeWritesAttributeBytes();
    void undoneActionLeavesNoTrace();
    void closedBoxIsStillWalked();
    void damagedOrderOfAClosedBoxIsEmpty();
    void readOnlyHandleRebuildsInMemoryAlone();
    void healingShowsInTheFile();
    void otherLanguage();
    void otherCollationRules();
    void temporaryIndexOfAnotherProcess();
    void editOfAnotherProcess();
    void indexDeletedByAnotherProcess();
    void readerBesideAWriter();
    void indexSortedByAnotherProcessWhileHeld();
    void indexReplacedWhileTheBoxWasClosed();
    void languageChangedWhileTheBoxWasClosed();
    void indexReplacedBesideAReader();
    void otherHomeFolder();
    void boxThroughALink();
    void newBoxOfTheSameName();
    void addedItems();
};

void IndexFamilyTest::cardsEnterMoveAndLeave()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", TextAscending));
    const QByteArray one = box.grouped("ONE.IDX", master, category(1));
    const QByteArray filter = box.grouped("FILTER.tdx", master, text("TOWN", Equal, "Nara"));
    const uint16_t b = box.add("b", 0, "\1", "Nara");
    const uint16_t a = box.add("a", 0, "\1");
    const uint16_t c = box.add("c", 0, {}, "Nara");
    QCOMPARE(cardsOf(master), (Cards{a, b, c}));
    QCOMPARE(cardsOf(one), (Cards{a, b}));
    QCOMPARE(cardsOf(filter), (Cards{b, c}));
    box.edit(b, "NAME", "d");
    QCOMPARE(cardsOf(master), (Cards{a, c, b}));
    QCOMPARE(cardsOf(filter), (Cards{c, b}));
    box.edit(a, "TOWN", "Nara");
    box.edit(b, "CTGR", "\2");
    QCOMPARE(cardsOf(one), Cards{a});
    QCOMPARE(cardsOf(filter), (Cards{a, c, b}));
    _CardDelete(box.handle(), c);
    _CardDelete(box.handle(), c);
    QCOMPARE(cardsOf(master), (Cards{a, b}));
    QCOMPARE(cardsOf(filter), (Cards{a, b}));
}

void IndexFamilyTest::createdAndOverwrittenCardsArePlaced()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    uint16_t made = 0;
    QCOMPARE(_CardCreate(box.handle(), &made), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index), (Cards{made, a}));
    uint16_t destination = made;
    box.edit(a, "NAME", "x");
    QCOMPARE(_CardCopy(box.handle(), a, &destination), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index), (Cards{a, made}));
    destination = 77;
    QCOMPARE(_CardCopy(box.handle(), a, &destination), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index), (Cards{a, made, 77}));
}

void IndexFamilyTest::bulkDeletionLeavesEveryIndex()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Descending));
    const QByteArray one = box.grouped("ONE.IDX", master, category(1));
    Cards kept;
    for (int i = 0; i < 10; ++i) {
        const uint16_t card = box.add(QByteArray::number(i), 0, i % 2 == 0 ? "\1" : "");
        if (i < 4) {
            kept.prepend(card);
        } else {
            box.setAttribute(card, HiddenMask);
        }
    }
    QCOMPARE(_CardAllDelete(box.handle(), HiddenMask, HiddenMask, 0), PdtmStatus(PdtmOk));
    QCOMPARE(allCardsOf(master), kept);
    QCOMPARE(allCardsOf(one), (Cards{kept[1], kept[3]}));
    const uint16_t card = box.add("35", 0, "\1");
    QCOMPARE(allCardsOf(one), (Cards{card, kept[1], kept[3]}));
    QCOMPARE(_CardAllDelete(box.handle(), 0, 0, 0), PdtmStatus(PdtmOk));
    QVERIFY(allCardsOf(master).isEmpty());
    QVERIFY(allCardsOf(one).isEmpty());
}

void IndexFamilyTest::directCategoryChangesTouchNoIndex()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray one = box.grouped("ONE.IDX", master, category(1));
    const uint16_t card = box.add("a");
    const CardItemKey key = TestBox::keyOf(card, "CTGR");
    QCOMPARE(_CardCategoryAppend(box.handle(), &key, 1), PdtmStatus(PdtmOk));
    QVERIFY(cardsOf(one).isEmpty());
    box.restart();
    QVERIFY(cardsOf(one).isEmpty()); // the loaded index took the counter along
    box.edit(card, "NUMB", native(uint16_t(3)));
    QCOMPARE(cardsOf(one), Cards{card});
}

void IndexFamilyTest::scratchCardsAreInNoIndex()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    uint16_t work = PdtmWorkCard;
    QCOMPARE(_CardCopy(box.handle(), a, &work), PdtmStatus(PdtmOk));
    box.write(work, "NAME", "b");
    QCOMPARE(cardsOf(index), Cards{a});
    box.restart();
    _IndexSort(index, box.handle());
    QCOMPARE(cardsOf(index), Cards{a});
    _CardDelete(box.handle(), work);
}

void IndexFamilyTest::attributeOfAHiddenCardSurvives()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.setAttribute(a, HiddenMask);
    QVERIFY(cardsOf(index).isEmpty());
    box.restart();
    QVERIFY(cardsOf(index).isEmpty());
    _IndexSort(index, box.handle());
    QVERIFY(cardsOf(index).isEmpty());
    box.setAttribute(a, 0);
    QCOMPARE(cardsOf(index), Cards{a});
}

void IndexFamilyTest::attributeMovesCardsWhereTheOrderGoesByIt()
{
    TestBox box;
    const QByteArray index =
        box.sorted("KYTEST.IDX", sortKey("ATTR", Descending) + sortKey("NAME", Ascending) + '\0');
    const QByteArray byName = box.sorted("NAME.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    const uint16_t b = box.add("b");
    const uint16_t c = box.add("c");
    box.setAttribute(b, 1);
    QCOMPARE(cardsOf(index), (Cards{b, a, c}));
    box.setAttribute(c, 2);
    QCOMPARE(cardsOf(index), (Cards{c, b, a}));
    QCOMPARE(cardsOf(byName), (Cards{a, b, c}));
    box.restart();
    QCOMPARE(cardsOf(index), (Cards{c, b, a}));
    box.setAttribute(c, 0);
    QCOMPARE(cardsOf(index), (Cards{b, a, c}));
    TestBox::writeInfo(byName, InfoSortExpression, sortBy("ATTR", Descending));
    QCOMPARE(_IndexSort(byName, box.handle()), PdtmStatus(PdtmOk));
    box.setAttribute(c, 2);
    QCOMPARE(cardsOf(byName), (Cards{c, b, a}));
}

void IndexFamilyTest::attributeDecidesWhereTheConditionGoesByIt()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray marked = box.grouped("MARKED.IDX", master, number("ATTR", Equal, 1));
    const uint16_t b = box.add("b");
    const uint16_t a = box.add("a");
    QVERIFY(cardsOf(marked).isEmpty());
    box.setAttribute(b, 1);
    box.setAttribute(a, 1);
    QCOMPARE(cardsOf(marked), (Cards{a, b}));
    box.setAttribute(b, 3);
    QCOMPARE(cardsOf(marked), Cards{a});
}

void IndexFamilyTest::viewsKeepToTheirParents()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a", 9, "\1", "Nara");
    box.add("b", 8, {}, "Nara");
    box.add("c", 7, "\1", "Kobe");
    const QByteArray one = box.grouped("ONE.IDX", master, category(1));
    const QByteArray filter = box.grouped("FILTER.tdx", one, text("TOWN", Equal, "Nara"));
    const QByteArray copy = box.at("ppinKYT0.tdx");
    const QByteArray sort = sortBy("NUMB", Ascending);
    QCOMPARE(_IndexCopy(filter, copy, 2, sort.constData(), int(sort.size())), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexSort(copy, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(TestBox::info(filter, InfoSearchExpression), text("TOWN", Equal, "Nara"));
    // Edits: only what is in Nara and in the category belongs.
    const uint16_t d = box.add("d", 1, "\1\2", "Nara");
    box.add("e", 2, "\2", "Nara");
    const Cards byName{a, d};
    const Cards byNumber{d, a};
    QCOMPARE(cardsOf(filter), byName);
    QCOMPARE(cardsOf(copy), byNumber);
    // Damage and rebuild, with all of them loaded anew.
    box.close();
    for (const QByteArray &index : {one, filter, copy}) {
        const QByteArray bytes = contentsOf(index);
        replaceContents(index, bytes.left(bytes.size() / 2));
    }
    box.forgetMemory();
    box.open();
    QCOMPARE(cardsOf(copy), byNumber);
    QCOMPARE(cardsOf(filter), byName);
    box.edit(a, "CTGR", "\2");
    QCOMPARE(cardsOf(filter), Cards{d});
    QCOMPARE(cardsOf(copy), Cards{d});
    QCOMPARE(cardsOf(one).size(), 2);
    // Filled with all cards the view has no parent any more.
    _IndexUnGroup(copy, box.handle());
    QCOMPARE(cardsOf(copy).size(), 5);
    box.add("f", 3, {}, "Kobe");
    QCOMPARE(cardsOf(copy).size(), 6);
    QCOMPARE(cardsOf(filter), Cards{d});
}

void IndexFamilyTest::unwrittenChangesAreRebuilt()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    box.add("b");
    box.restart();
    const QByteArray before = contentsOf(index);
    const uint16_t a = box.add("a");
    box.close();
    replaceContents(index, before); // as after a crash: the box went on, the index didn't
    box.forgetMemory();
    box.open();
    QCOMPARE(cardsOf(index).size(), 2);
    QCOMPARE(cardsOf(index).first(), a);
}

void IndexFamilyTest::closeWritesTheCounterAloneWhereNoCardMoved()
{
    TestBox box;
    const QByteArray byName = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray byNumber = box.sorted("NUMBER.IDX", sortBy("NUMB", Ascending));
    const uint16_t a = box.add("a", 1);
    const uint16_t b = box.add("b", 2);
    box.restart();
    const uint64_t nameFile = inodeOf(byName);
    const uint64_t numberFile = inodeOf(byNumber);
    const QByteArray before = contentsOf(byName);
    box.edit(a, "NUMB", native(uint16_t(3)));
    box.restart();
    QCOMPARE(inodeOf(byName), nameFile);
    QVERIFY(inodeOf(byNumber) != numberFile);
    const QByteArray after = contentsOf(byName);
    QCOMPARE(after.size(), before.size());
    QVERIFY(after != before);
    QCOMPARE(cardsOf(byName), (Cards{a, b}));
    QCOMPARE(cardsOf(byNumber), (Cards{b, a}));
    QCOMPARE(inodeOf(byName), nameFile); // neither was built anew
    QCOMPARE(contentsOf(byName), after);
}

void IndexFamilyTest::closeWritesAttributeBytes()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.restart();
    const uint64_t file = inodeOf(index);
    box.setAttribute(a, 0); // as it is
    box.restart();
    QCOMPARE(inodeOf(index), file);
    box.setAttribute(a, HiddenMask);
    box.close();
    box.forgetMemory();
    QVERIFY(cardsOf(index).isEmpty()); // with the box closed, from the file
    QVERIFY(inodeOf(index) != file);
}

void IndexFamilyTest::undoneActionLeavesNoTrace()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t b = box.add("b");
    const QByteArray before = contentsOf(master);
    QCOMPARE(DtmBeginAction(box.handle()), PdtmStatus(PdtmOk));
    box.add("a");
    _IndexSort(master, box.handle()); // written in the middle of the action
    QCOMPARE(cardsOf(master).size(), 2);
    box.close();
    QVERIFY(box.open());
    QCOMPARE(cardsOf(master), Cards{b});
    const uint16_t c = box.add("c");
    QCOMPARE(cardsOf(master), (Cards{b, c}));
    box.restart();
    QCOMPARE(cardsOf(master), (Cards{b, c}));
}

void IndexFamilyTest::closedBoxIsStillWalked()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.close();
    QCOMPARE(cardsOf(index), Cards{a});
    box.forgetMemory();
    QCOMPARE(cardsOf(index), Cards{a}); // from the file
    uint16_t number = 0;
    QCOMPARE(_IndexNoAppend(index, 0, a, &number), PdtmStatus(PdtmBadArgument));
}

void IndexFamilyTest::damagedOrderOfAClosedBoxIsEmpty()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.close();
    const QByteArray bytes = contentsOf(index);
    replaceContents(index, bytes.left(bytes.size() / 2));
    box.forgetMemory();
    QVERIFY(cardsOf(index).isEmpty());
    box.open();
    QCOMPARE(cardsOf(index), Cards{a});
}

void IndexFamilyTest::readOnlyHandleRebuildsInMemoryAlone()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t a = box.add("a");
    box.close();
    const QByteArray bytes = contentsOf(index);
    const QByteArray damaged = bytes.left(bytes.size() / 2);
    replaceContents(index, damaged);
    box.forgetMemory();
    QVERIFY(box.open(1));
    QCOMPARE(cardsOf(index), Cards{a});
    box.close();
    QCOMPARE(contentsOf(index), damaged);
}

void IndexFamilyTest::healingShowsInTheFile()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    for (int i = 0; i < 50; ++i) {
        box.add(QByteArray::number(i));
    }
    box.close();
    const QByteArray bytes = contentsOf(index);
    replaceContents(index, bytes.left(bytes.size() / 2));
    box.forgetMemory();
    box.open();
    QCOMPARE(cardsOf(index).size(), 50);
    QCOMPARE(contentsOf(index), bytes);
}

void IndexFamilyTest::otherLanguage()
{
    TestBox box;
    box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", TextAscending));
    QCOMPARE(check(index), PdtmStatus(PdtmOk));
    DtmSetLanguage("en");
    QCOMPARE(check(index), PdtmStatus(PdtmOtherLanguage));
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(check(index), PdtmStatus(PdtmOk));
    DtmSetLanguage("ja");
    QCOMPARE(check(index), PdtmStatus(PdtmOtherLanguage));
    QCOMPARE(check("F0:NONE.IDX"), PdtmStatus(PdtmMissing));
    QCOMPARE(check(box.path()), PdtmStatus(PdtmDamaged));
}

void IndexFamilyTest::otherCollationRules()
{
    TestBox box;
    const uint16_t b = box.add("b");
    const uint16_t a = box.add("A");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", TextAscending));
    box.close();
    // The keys of another version of the rules: they must not be compared with those of today.
    pdtm::IndexFileReader reader;
    const std::string path = pdtm::realPath(index);
    QCOMPARE(reader.open(path), PdtmStatus(PdtmOk));
    pdtm::IndexDefinition definition = reader.definition();
    QVERIFY(definition.collator != 0);
    definition.collator += 1;
    pdtm::FileStamp stamp;
    pdtm::OrderImage image{reader.counter(), {b, a}, std::string(2, '\0'), {1, 2}, "12"};
    QCOMPARE(pdtm::writeIndexFile(path, definition, image, stamp), PdtmStatus(PdtmOk));
    box.forgetMemory();
    box.open();
    QCOMPARE(cardsOf(index), (Cards{b, a})); // a step needs no key
    const uint16_t c = box.add("ab");
    QCOMPARE(cardsOf(index), (Cards{a, c, b}));
}

void IndexFamilyTest::temporaryIndexOfAnotherProcess()
{
    TestBox box;
    const uint16_t a = box.add("a", 5);
    const uint16_t b = box.add("b", 4);
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray temporary = box.at("ppinKYT0.tdx");
    QCOMPARE(inOtherProcess({"sort", box.path(), master, temporary}), 0); // beside the holder
    QCOMPARE(box.family(), (QList<QByteArray>{master, temporary}));
    QCOMPARE(cardsOf(temporary), (Cards{b, a}));
    const uint16_t c = box.add("c", 1);
    QCOMPARE(cardsOf(temporary), (Cards{c, b, a}));
    box.restart();
    QCOMPARE(cardsOf(temporary), (Cards{c, b, a}));
}

void IndexFamilyTest::editOfAnotherProcess()
{
    TestBox box;
    const uint16_t a = box.add("a");
    const uint16_t b = box.add("b");
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray second = box.sorted("SECOND.IDX", sortBy("NAME", Descending));
    QCOMPARE(cardsOf(master), (Cards{a, b}));
    QCOMPARE(cardsOf(second), (Cards{b, a}));
    box.close();
    const QByteArray before = contentsOf(second);
    QCOMPARE(inOtherProcess({"edit", box.path(), QByteArray::number(a), "c"}), 0);
    replaceContents(second, before); // one that the other process didn't keep in step
    box.open();
    QCOMPARE(cardsOf(master), (Cards{b, a}));
    QCOMPARE(cardsOf(second), (Cards{a, b}));
}

void IndexFamilyTest::indexDeletedByAnotherProcess()
{
    TestBox box;
    box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    QCOMPARE(cardsOf(index).size(), 1);
    box.add("b"); // memory is ahead of the file
    QCOMPARE(inOtherProcess({"delete", index}), 0);
    box.close();
    QVERIFY(!QFile::exists(TestBox::file(index)));
    box.open();
    uint16_t number = 0;
    QCOMPARE(_NextIndexNo(index, 0, 0, 0, &number), PdtmStatus(PdtmMissing));
}

void IndexFamilyTest::readerBesideAWriter()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const uint16_t b = box.add("b");
    QCOMPARE(inOtherProcess({"walk", box.path(), index}), int(b));
    const uint16_t a = box.add("a");
    QCOMPARE(inOtherProcess({"walk", box.path(), index}), int(a));
    QCOMPARE(cardsOf(index), (Cards{a, b}));
}

void IndexFamilyTest::indexSortedByAnotherProcessWhileHeld()
{
    TestBox box;
    const uint16_t a = box.add("a", 2);
    const uint16_t b = box.add("b", 1);
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray index = box.sorted("SECOND.IDX", sortBy("NAME", Ascending));
    const uint16_t c = box.add("c", 0);
    QCOMPARE(inOtherProcess({"delete", index}), 0);
    QCOMPARE(inOtherProcess({"sort", box.path(), master, index}), 0);
    box.add("d", 5);
    box.close(); // writes its own indexes, but not over the one of the other process
    QCOMPARE(TestBox::info(index, InfoSortExpression), sortBy("NUMB", Ascending));
    box.open();
    QCOMPARE(cardsOf(index).mid(0, 3), (Cards{c, b, a}));
}

void IndexFamilyTest::indexReplacedWhileTheBoxWasClosed()
{
    TestBox box;
    const uint16_t a = box.add("a", 2);
    const uint16_t b = box.add("b", 1);
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray second = box.sorted("SECOND.IDX", sortBy("NAME", Ascending));
    const QByteArray third = box.sorted("THIRD.IDX", sortBy("NAME", Ascending));
    box.close();
    QCOMPARE(inOtherProcess({"delete", second}), 0);
    QCOMPARE(inOtherProcess({"sort", box.path(), master, second}), 0);
    QCOMPARE(inOtherProcess({"delete", third}), 0);
    box.open();
    QCOMPARE(cardsOf(second), (Cards{b, a})); // though the box has not changed
    uint16_t number = 0;
    QCOMPARE(_NextIndexNo(third, 0, 0, 0, &number), PdtmStatus(PdtmMissing));
    QCOMPARE(cardsOf(master), (Cards{a, b}));
}

void IndexFamilyTest::languageChangedWhileTheBoxWasClosed()
{
    TestBox box;
    box.add("a");
    const QByteArray byText = box.sorted("KYTEST.IDX", sortBy("NAME", TextAscending));
    const QByteArray byNumber = box.sorted("SECOND.IDX", sortBy("NUMB", Ascending));
    box.close();
    DtmSetLanguage("sv");
    QCOMPARE(check(byText), PdtmStatus(PdtmOtherLanguage));
    QCOMPARE(check(byNumber), PdtmStatus(PdtmOtherLanguage));
    box.open();
    const uint16_t o = box.add("\xC3\xB6");
    const uint16_t z = box.add("z");
    QCOMPARE(cardsOf(byText).mid(1), (Cards{z, o})); // as Swedish has it
    box.close();
    DtmSetLanguage("ja");
    box.open();
    QCOMPARE(cardsOf(byText).mid(1), (Cards{o, z}));
    QCOMPARE(check(byText), PdtmStatus(PdtmOk));
}

void IndexFamilyTest::indexReplacedBesideAReader()
{
    TestBox box;
    const uint16_t a = box.add("a", 2);
    const uint16_t b = box.add("b", 1);
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray second = box.sorted("SECOND.IDX", sortBy("NAME", Ascending));
    box.close();
    QVERIFY(box.open(1));
    QCOMPARE(cardsOf(second), (Cards{a, b}));
    QCOMPARE(inOtherProcess({"delete", second}), 0);
    QCOMPARE(inOtherProcess({"sort", box.path(), master, second}), 0);
    QCOMPARE(cardsOf(second), (Cards{b, a}));
    QCOMPARE(inOtherProcess({"edit", box.path(), QByteArray::number(a), "c"}), 0);
    QCOMPARE(cardsOf(master), (Cards{b, a}));
}

void IndexFamilyTest::otherHomeFolder()
{
    TestBox box;
    const uint16_t a = box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    QCOMPARE(cardsOf(index), Cards{a});
    const QByteArray home = qgetenv("HOME");
    const QTemporaryDir other;
    qputenv("HOME", QFile::encodeName(other.path()));
    uint16_t number = 0;
    const PdtmStatus status = _NextIndexNo(index, 0, 0, 0, &number);
    qputenv("HOME", home);
    QCOMPARE(status, PdtmStatus(PdtmMissing));
    QCOMPARE(cardsOf(index), Cards{a});
}

void IndexFamilyTest::boxThroughALink()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QString link = QDir::homePath() + "/link";
    QVERIFY(QFile::link(QFileInfo(TestBox::file(box.path())).path(), link));
    const QByteArray linked = QFile::encodeName(link) + "/KYTEST.IDX";
    const uint16_t a = box.add("a");
    QCOMPARE(cardsOf(linked), Cards{a});
    const uint16_t b = box.add("b");
    QCOMPARE(cardsOf(linked), (Cards{a, b}));
    QCOMPARE(_IndexSort(linked, box.handle()), PdtmStatus(PdtmOk));
    QFile::remove(link);
}

void IndexFamilyTest::newBoxOfTheSameName()
{
    QByteArray bytes;
    QByteArray index;
    {
        TestBox box;
        index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
        box.add("a");
        box.close();
        bytes = contentsOf(index);
    }
    TestBox box;
    replaceContents(index, bytes);
    QVERIFY(cardsOf(index).isEmpty());
    const uint16_t a = box.add("z");
    QCOMPARE(cardsOf(index), Cards{a});
}

void IndexFamilyTest::addedItems()
{
    TestBox box;
    const uint16_t a = box.add("a", 2);
    const uint16_t b = box.add("b", 1);
    const QByteArray index =
        box.sorted("KYTEST.IDX", sortKey("LATE", Ascending) + sortKey("NAME", Ascending) + '\0');
    box.close();
    const ITEMDATA late = TestBox::item("LATE", ItemUshort, KindUshort);
    uint32_t added = 0;
    QCOMPARE(_BoxItemAppend(box.path(), &late, 1, &added), PdtmStatus(PdtmOk));
    QVERIFY(added != 0);
    box.open();
    QCOMPARE(cardsOf(index), (Cards{a, b}));
    box.edit(a, "LATE", native(uint16_t(7)));
    QCOMPARE(cardsOf(index), (Cards{b, a}));
    const uint16_t c = box.add("c");
    QCOMPARE(cardsOf(index), (Cards{b, c, a}));
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc > 2 && QByteArray(argv[1]) == "--child") {
        QList<QByteArray> arguments;
        for (int i = 2; i < argc; ++i) {
            arguments << argv[i];
        }
        return runChild(arguments);
    }
    IndexFamilyTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "indexfamilytest.moc"
