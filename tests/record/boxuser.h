#ifndef KY_TEST_BOXUSER_H
#define KY_TEST_BOXUSER_H

#include "childprocess.h"
#include "qcopchannel.h"
#include "qpeapplication.h"
#include "recordfixture.h"
#include "viewfixture.h"
#include <functional>
#include <memory>

/**
 * An application that uses one box and obeys lines of the test, each with one line as its answer. A line is a
 * command and its arguments, with blanks between them:
 *
 *     open close state       the box: all answer "open" or "closed"
 *     renew                  a new manager in place of the old one
 *     take                   renew until the box is open and all earlier messages have been dealt with
 *     settle                 state, when all messages sent before have been dealt with
 *     await STATE            state, when it is that one
 *     begin CARD             an edit, 0 for a new card
 *     title TEXT, number N   write into it
 *     finish CARD, cancel    end it: answers the card, 0 when it was refused
 *     add TEXT               a new card: answers its id
 *     delete CARD
 *     number-of CARD         what stands in it
 *     file CARD ID           into a category
 *     categories-of CARD     ids with blanks between them, "none" when there is none
 *     view                   the title of the current card, the direction, the titles in their order
 *     turn                   the view as a user left it: the second card, descending
 *     sort CODE, find TEXT, category ID, leave    other views: by an item, of a search, of a category; out
 *                            of the search
 *     evict                  makes all its temporary indexes make room
 *
 * "done" and "refused" are the answers to the rest.
 */
class BoxUser
{
public:
    BoxUser(const char *box, bool readOnly) : m_box(box), m_readOnly(readOnly) { renew(); }

    [[nodiscard]] QByteArray obey(const QByteArray &line)
    {
        const qsizetype blank = line.indexOf(' ');
        const QByteArray command = blank < 0 ? line : line.left(blank);
        const QByteArray argument = blank < 0 ? QByteArray() : line.mid(blank + 1);
        const auto known = commands().constFind(command);
        return known == commands().cend() ? "unknown " + line : (*known)(*this, argument);
    }

    [[nodiscard]] QByteArray state() const { return m_manager->isOpened() ? "open" : "closed"; }

private:
    using Command = std::function<QByteArray(BoxUser &, const QByteArray &)>;

    static const QHash<QByteArray, Command> &commands()
    {
        static const QHash<QByteArray, Command> table = {
            {"open",
             [](BoxUser &user, const QByteArray &) { return user.tried(user.m_manager->open(false)); }},
            {"close", [](BoxUser &user, const QByteArray &) { return user.tried(user.m_manager->close()); }},
            {"state", [](BoxUser &user, const QByteArray &) { return user.state(); }},
            {"renew", [](BoxUser &user, const QByteArray &) { return user.tried(user.renew()); }},
            {"take", [](BoxUser &user, const QByteArray &) { return user.take(); }},
            {"settle", [](BoxUser &user, const QByteArray &) { return user.settle(); }},
            {"await", [](BoxUser &user, const QByteArray &wanted) { return user.await(wanted); }},
            {"begin",
             [](BoxUser &user, const QByteArray &card) {
                 return done(user.m_manager->startEditCard(card.toULong()));
             }},
            {"title",
             [](BoxUser &user, const QByteArray &text) {
                 return done(user.m_manager->writeItem("TITL", QString::fromUtf8(text)));
             }},
            {"number",
             [](BoxUser &user, const QByteArray &text) {
                 return done(user.m_manager->writeItem("LONG", text.toULong()));
             }},
            {"finish", [](BoxUser &user, const QByteArray &card) { return user.finish(card.toULong()); }},
            {"cancel",
             [](BoxUser &user, const QByteArray &) { return done(user.m_manager->cancelEditCard()); }},
            {"add",
             [](BoxUser &user, const QByteArray &title) {
                 return QByteArray::number(quint32(addCard(*user.m_manager, QString::fromUtf8(title))));
             }},
            {"delete",
             [](BoxUser &user, const QByteArray &text) {
                 unsigned long card = text.toULong();
                 return done(user.m_manager->deleteCard(&card, KyPDataManager::DeleteSingle));
             }},
            {"number-of",
             [](BoxUser &user, const QByteArray &card) { return user.numberOf(card.toULong()); }},
            {"file",
             [](BoxUser &user, const QByteArray &words) {
                 const QByteArrayList parts = words.split(' ');
                 return done(user.m_manager->addCardToCtgr(parts.value(0).toULong(), parts.value(1).toInt(),
                                                           KyPDataManager::DeleteSingle, false));
             }},
            {"categories-of",
             [](BoxUser &user, const QByteArray &card) { return user.categoriesOf(card.toULong()); }},
            {"view", [](BoxUser &user, const QByteArray &) { return user.view(); }},
            {"sort",
             [](BoxUser &user, const QByteArray &code) {
                 return done(user.m_manager->sort(code.constData(), true));
             }},
            {"find", [](BoxUser &user, const QByteArray &text) { return user.find(text); }},
            {"category", [](BoxUser &user,
                            const QByteArray &id) { return done(user.m_manager->enableFilter(id.toInt())); }},
            {"leave", [](BoxUser &user, const QByteArray &) { return done(user.m_manager->unfilter(true)); }},
            {"turn", [](BoxUser &user, const QByteArray &) { return user.turn(); }},
            {"evict", [](BoxUser &user, const QByteArray &) { return user.evict(); }},
        };
        return table;
    }

    static QByteArray done(bool worked) { return worked ? "done" : "refused"; }
    QByteArray tried(bool) const { return state(); }

    bool renew()
    {
        m_manager.reset();
        m_manager = std::make_unique<KyPDataManager>(m_box.constData(), nullptr, m_readOnly);
        return m_manager->isOpened();
    }

    QByteArray take()
    {
        // A request from before may arrive after the box was had.
        (void)QTest::qWaitFor([this] { return (m_manager->isOpened() || renew()) && settle() == "open"; },
                              20000);
        return state();
    }

    QByteArray settle() const
    {
        QCopChannel channel("QPE/System");
        bool settled = false;
        const QByteArray marker = "marker" + QByteArray::number(QCoreApplication::applicationPid()) + "()";
        QObject::connect(&channel, &QCopChannel::received, &channel,
                         [&](const QByteArray &message) { settled |= message == marker; });
        QCopChannel::send("QPE/System", marker);
        (void)QTest::qWaitFor([&] { return settled; }, 20000);
        return state();
    }

    QByteArray await(const QByteArray &wanted) const
    {
        (void)QTest::qWaitFor([&] { return state() == wanted; }, 20000);
        return state();
    }

    QByteArray finish(unsigned long card)
    {
        return m_manager->finishEditCard(&card) ? QByteArray::number(quint32(card)) : "0";
    }

    QByteArray numberOf(unsigned long card) const
    {
        unsigned long number = 0;
        return m_manager->readUlongItem("LONG", &number, card) ? QByteArray::number(quint32(number)) : "none";
    }

    QByteArray view() const
    {
        QByteArrayList parts{m_manager->readItem("TITL").toUtf8(),
                             m_manager->ascendent() ? "ascending" : "descending"};
        for (unsigned long card = m_manager->firstCard(); card != 0; card = m_manager->nextCard(card))
            parts.append(m_manager->readItem("TITL", card).toUtf8());
        return parts.join(' ');
    }

    QByteArray categoriesOf(unsigned long card) const
    {
        QByteArrayList ids;
        for (const int id : m_manager->readCategories(card))
            ids.append(QByteArray::number(id));
        return ids.isEmpty() ? "none" : ids.join(' ');
    }

    QByteArray evict()
    {
        // Each new order takes the place of the oldest index, until none of the others is left.
        bool isDone = true;
        for (const char *item : {"NUMB", "SHRT", "LONG", "FLAG", "SALT", "TIME", "BINA", "COLR", "SJIS"})
            isDone = m_manager->sort(item, true) && isDone;
        m_manager->sort(true);
        return done(isDone);
    }

    QByteArray find(const QByteArray &text)
    {
        const QByteArray term = containsText("TITL", text), order = plainKey("LONG");
        return done(m_manager->filter(term.constData(), static_cast<unsigned long>(term.size()),
                                      order.constData(), static_cast<unsigned long>(order.size()),
                                      KyPDataManager::FilterMaster, true));
    }

    QByteArray turn()
    {
        m_manager->first();
        m_manager->next();
        privateOf(*m_manager).ascendent = false;
        return view();
    }

    const QByteArray m_box;
    const bool m_readOnly;
    std::unique_ptr<KyPDataManager> m_manager;
};

/** For childMain(): USE BOX NAME, and MODE "read" for a manager that only reads. Its first line is the state.
 */
inline int useBox(int argc, char **argv)
{
    QPEApplication application(argc, argv, argv[3]);
    BoxUser user(argv[2], argc > 4 && qstrcmp(argv[4], "read") == 0);
    const ChildInput input([&user](const QByteArray &line) { ChildProcess::say(user.obey(line)); });
    ChildProcess::say(user.state());
    return application.exec();
}

/** Such an application, for the test. */
class BoxUserProcess
{
public:
    BoxUserProcess(const QByteArray &box, const QByteArray &name, const QStringList &mode = {})
        : m_process(QStringList{"use", box, name} + mode)
    {
    }

    /** Its answer to a line; "" when none comes. */
    QByteArray ask(const QByteArray &line)
    {
        m_process.write(line);
        return m_process.readLine(30000);
    }
    /** The state that it begins with. */
    QByteArray start() { return m_process.readLine(30000); }
    void write(const QByteArray &line) { m_process.write(line); }
    QByteArray readLine() { return m_process.readLine(30000); }
    void kill() { m_process.kill(); }
    int finish() { return m_process.finish(); }

private:
    ChildProcess m_process;
};

#endif
