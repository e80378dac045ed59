#include "imagebuilder.h"
#include "ydicfile_p.h"

#include <QTest>

#include <algorithm>
#include <array>

using namespace imagebuilder;

namespace {

using Table = std::array<uint8_t, YDIC_COMBINATIONS>;

QByteArray patch(uint8_t corrects, uint8_t makes, uint8_t serial)
{
    const Image image{.type = YDIC_PATCH, .corrects = corrects, .edition = makes, .serial = serial};
    return QByteArray::fromStdString(image.bytes());
}

} // namespace

/** Which combination of a dictionary and a patch is the best. */
class VersionChoiceTest : public QObject
{
    Q_OBJECT
private slots:
    void latest_data();
    void latest();
    void latestOfEqualEditionsGoesByPriority();
    void firstOfEqualPrioritiesIsLatest();
    void patchesOfCombinations_data();
    void patchesOfCombinations();
    void laterCfPatchGoesFirst_data();
    void laterCfPatchGoesFirst();
};

void VersionChoiceTest::latest_data()
{
    QTest::addColumn<QList<int>>("editions");
    QTest::addColumn<int>("winner");
    using Editions = QList<int>;
    QTest::newRow("none") << Editions{0, 0, 0, 0, 0, 0, 0, 0, 0} << -1;
    QTest::newRow("the first edition") << Editions{0, 0, 0, 1, 0, 0, 0, 0, 0} << 3;
    QTest::newRow("the newest") << Editions{1, 2, 3, 4, 5, 6, 7, 9, 8} << 7;
    QTest::newRow("newer beats priority") << Editions{1, 0, 0, 0, 0, 0, 0, 0, 2} << 8;
    QTest::newRow("older behind newer") << Editions{2, 0, 0, 0, 0, 0, 0, 0, 1} << 0;
    QTest::newRow("editions have no sign") << Editions{127, 0, 0, 128, 0, 0, 255, 0, 0} << 6;
}

void VersionChoiceTest::latest()
{
    QFETCH(QList<int>, editions);
    const Table priorities{9, 6, 5, 8, 4, 3, 7, 2, 1};
    Table table{};
    std::ranges::transform(editions, table.begin(), [](int edition) { return uint8_t(edition); });
    QTEST(latestVersion(table.data(), priorities.data()), "winner");
}

void VersionChoiceTest::latestOfEqualEditionsGoesByPriority()
{
    const Table priorities{9, 6, 5, 8, 4, 3, 7, 2, 200};
    Table editions{};
    editions.fill(5);
    QList<int> order;
    for (int winner = 0; (winner = latestVersion(editions.data(), priorities.data())) >= 0;) {
        order.append(winner);
        editions[size_t(winner)] = 0;
    }
    QCOMPARE(order, (QList<int>{8, 0, 3, 6, 1, 2, 4, 5, 7}));
}

void VersionChoiceTest::firstOfEqualPrioritiesIsLatest()
{
    const Table editions{0, 0, 5, 5, 5, 0, 0, 0, 0}, priorities{9, 6, 4, 4, 4, 3, 7, 2, 1};
    QCOMPARE(latestVersion(editions.data(), priorities.data()), 2);
}

void VersionChoiceTest::patchesOfCombinations_data()
{
    QTest::addColumn<QList<int>>("dictionaries"); // SD, CF, internal
    QTest::addColumn<QList<int>>("patches");      // SD: corrects, makes; CF: corrects, makes; 0: absent
    QTest::addColumn<QList<int>>("editions");
    QTest::addColumn<QByteArray>("useless");
    using L = QList<int>;
    QTest::newRow("no patch") << L{1, 2, 3} << L{0, 0, 0, 0} << L{1, 0, 0, 2, 0, 0, 3, 0, 0}
                              << QByteArray("--");
    QTest::newRow("SD with SD") << L{1, 2, 3} << L{1, 5, 0, 0} << L{0, 5, 0, 2, 0, 0, 3, 0, 0}
                                << QByteArray("--");
    QTest::newRow("SD with CF") << L{1, 2, 3} << L{0, 0, 1, 5} << L{0, 0, 5, 2, 0, 0, 3, 0, 0}
                                << QByteArray("--");
    QTest::newRow("CF with SD") << L{1, 2, 3} << L{2, 5, 0, 0} << L{1, 0, 0, 0, 5, 0, 3, 0, 0}
                                << QByteArray("--");
    QTest::newRow("CF with CF") << L{1, 2, 3} << L{0, 0, 2, 5} << L{1, 0, 0, 0, 0, 5, 3, 0, 0}
                                << QByteArray("--");
    QTest::newRow("internal with SD")
        << L{1, 2, 3} << L{3, 5, 0, 0} << L{1, 0, 0, 2, 0, 0, 0, 5, 0} << QByteArray("--");
    QTest::newRow("internal with CF")
        << L{1, 2, 3} << L{0, 0, 3, 5} << L{1, 0, 0, 2, 0, 0, 0, 0, 5} << QByteArray("--");
    QTest::newRow("every dictionary with both")
        << L{4, 4, 4} << L{4, 5, 4, 6} << L{0, 5, 6, 0, 5, 6, 0, 5, 6} << QByteArray("--");
    QTest::newRow("each patch with its dictionary")
        << L{1, 0, 3} << L{3, 4, 1, 2} << L{0, 0, 2, 0, 0, 0, 0, 4, 0} << QByteArray("--");
    QTest::newRow("SD fits none") << L{4, 0, 4} << L{3, 5, 0, 0} << L{4, 0, 0, 0, 0, 0, 4, 0, 0}
                                  << QByteArray("*-");
    QTest::newRow("CF fits none") << L{4, 0, 4} << L{0, 0, 5, 6} << L{4, 0, 0, 0, 0, 0, 4, 0, 0}
                                  << QByteArray("-*");
    QTest::newRow("neither fits") << L{4, 0, 0} << L{3, 5, 5, 6} << L{4, 0, 0, 0, 0, 0, 0, 0, 0}
                                  << QByteArray("**");
    QTest::newRow("SD fits, CF doesn't")
        << L{4, 0, 0} << L{4, 5, 5, 6} << L{0, 5, 0, 0, 0, 0, 0, 0, 0} << QByteArray("-*");
}

void VersionChoiceTest::patchesOfCombinations()
{
    QFETCH(QList<int>, dictionaries);
    QFETCH(QList<int>, patches);
    QFETCH(QList<int>, editions);
    ydic_info info{};
    for (const int volume : {0, 1}) {
        const size_t slot = size_t(volume) * 2 + 1;
        info.fileStatus[slot] = patches[volume * 2] ? YDIC_FILE_GOOD : YDIC_FILE_ABSENT;
        info.fileHead[slot][YDIC_AT_CORRECTS] = uint8_t(patches[volume * 2]);
        info.fileHead[slot][YDIC_AT_EDITION] = uint8_t(patches[volume * 2 + 1]);
    }
    Table table{}, priorities{9, 6, 5, 8, 4, 3, 7, 2, 1};
    const auto before = priorities;
    for (const int i : {0, 1, 2})
        table[size_t(i) * 3] = uint8_t(dictionaries[i]);
    QCOMPARE(verchk_withPatch(&info, table.data(), priorities.data()), 1);
    QCOMPARE(QList<int>(table.begin(), table.end()), editions);
    QCOMPARE(priorities, before);
    QByteArray useless;
    for (const size_t slot : {1U, 3U})
        useless += info.opened[slot] == YDIC_PATCH_USELESS ? '*' : info.opened[slot] == 0 ? '-' : '?';
    QTEST(useless, "useless");
}

void VersionChoiceTest::laterCfPatchGoesFirst_data()
{
    QTest::addColumn<QByteArray>("sd");
    QTest::addColumn<QByteArray>("cf");
    QTest::addColumn<bool>("isCfFirst");
    QTest::addColumn<bool>("isSdGood");
    QTest::addColumn<bool>("isCfGood");
    const auto row = [](const char *name, const QByteArray &sd, const QByteArray &cf, bool isCfFirst,
                        bool isSdGood = true, bool isCfGood = true) {
        QTest::newRow(name) << sd << cf << isCfFirst << isSdGood << isCfGood;
    };
    row("CF has the greater serial", patch(4, 5, 1), patch(4, 5, 2), true);
    row("serials have no sign", patch(4, 5, 127), patch(4, 5, 128), true);
    row("the same serial", patch(4, 5, 2), patch(4, 5, 2), false);
    row("SD has the greater serial", patch(4, 5, 3), patch(4, 5, 2), false);
    row("they make other editions", patch(4, 5, 1), patch(4, 6, 2), false);
    row("they correct other editions", patch(3, 5, 1), patch(4, 5, 2), false);
    row("SD is damaged", patch(4, 5, 1), patch(4, 5, 2), false, false, true);
    row("CF is damaged", patch(4, 5, 1), patch(4, 5, 2), false, true, false);
}

void VersionChoiceTest::laterCfPatchGoesFirst()
{
    QFETCH(QByteArray, sd);
    QFETCH(QByteArray, cf);
    QFETCH(bool, isCfFirst);
    QFETCH(bool, isSdGood);
    QFETCH(bool, isCfGood);
    ydic_info info{};
    info.fileStatus[1] = isSdGood ? YDIC_FILE_GOOD : YDIC_FILE_WRONG_SIZE;
    info.fileStatus[3] = isCfGood ? YDIC_FILE_GOOD : YDIC_FILE_WRONG_SIZE;
    memcpy(info.fileHead[1], sd.constData(), 16);
    memcpy(info.fileHead[3], cf.constData(), 16);
    Table editions{4, 0, 0, 4, 0, 0, 4, 0, 0};
    Table priorities{90, 60, 50, 80, 40, 30, 70, 20, 10};
    verchk_withPatch(&info, editions.data(), priorities.data());
    const Table unchanged{90, 60, 50, 80, 40, 30, 70, 20, 10}, changed{90, 59, 51, 80, 39, 31, 70, 19, 11};
    QCOMPARE(priorities, isCfFirst ? changed : unchanged);
}

QTEST_GUILESS_MAIN(VersionChoiceTest)
#include "versionchoicetest.moc"
