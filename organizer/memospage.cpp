#include "memospage.h"

#include "cardlist.h"
#include "memoform.h"
#include "timestring.h"

namespace {

QString counted(int memos)
{
    return memos == 1 ? MemosPage::tr("1 memo") : MemosPage::tr("%1 memos").arg(memos);
}

} // namespace

MemosPage::MemosPage(CategoryTable *table, QWidget *parent)
    : CardsPage(BoxKind::memos(), table, {tr("Memos"), tr("No memos yet"), counted}, parent)
{
    const auto title = [this](unsigned long card) { return titleOf(card); };
    begin(new CardList(book(), {{tr("Title"), MemoField::Title, 44, title},
                                {tr("Changed"), MemoField::ChangeTime, 20}}),
          new MemoForm(book(), table));
}

/* A memo that was made elsewhere may have no title. */
QString MemosPage::titleOf(unsigned long card) const
{
    const QString title = book()->text(card, MemoField::Title);
    return title.isEmpty() ? book()->text(card, MemoField::Contents).section(QLatin1Char('\n'), 0, 0) : title;
}

QString MemosPage::changeOf(unsigned long card) const
{
    const QDateTime time = book()->value(card, MemoField::ChangeTime).toDateTime();
    if (!time.isValid())
        return {};
    return TimeString::numberDateString(time.date(), TimeString::currentDateFormat()) + QLatin1Char(' ') +
           TimeString::timeString(time.time(), TimeString::currentAmPm());
}

CardDetails MemosPage::detailsOf(unsigned long card) const
{
    return {
        titleOf(card),
        changeOf(card),
        {{book()->fields().itemInfo(MemoField::Contents).label, book()->text(card, MemoField::Contents)}}};
}
