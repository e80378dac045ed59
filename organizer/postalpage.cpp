#include "postalpage.h"

#include "postaldictionary.h"
#include "zipconversion.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace {

QString withHyphen(const QString &code)
{
    return code.size() == 7 ? code.left(3) + QLatin1Char('-') + code.mid(3) : code;
}

/** True for what can only be a code, or the beginning of one. */
bool looksLikeCode(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("^[〒\\s]*[0-9０-９][0-9０-９\\s\\-－‐ー―−]*$"));
    return digits.match(text).hasMatch();
}

QString counted(qsizetype places)
{
    if (places == 1)
        return PostalPage::tr("1 place");
    // The list ends there, whether or not that is all.
    return places == KyAddressListMaximum ? PostalPage::tr("%1 places or more").arg(places)
                                          : PostalPage::tr("%1 places").arg(places);
}

/** As addresses are written on letters, and as copy() gives them. */
QString withoutCode(const QString &address)
{
    static const QRegularExpression code(
        QStringLiteral("^〒?\\s*[0-9０-９]{3}[\\-－‐−]?[0-9０-９]{4}\\s*(?=\\D)"));
    return QString(address).remove(code);
}

QPushButton *makeButton(const QString &text, const QKeySequence &keys, const QString &hint)
{
    auto *button = new QPushButton(text);
    button->setShortcut(keys);
    button->setToolTip(hint);
    button->setEnabled(false);
    return button;
}

} // namespace

PostalPage::PostalPage(QWidget *parent)
    : QWidget(parent), m_line(new QLineEdit), m_list(new KyAddressListBox), m_status(new QLabel),
      m_previous(makeButton(tr("Previous code"), {Qt::ALT | Qt::Key_Left}, tr("Alt+Left"))),
      m_next(makeButton(tr("Next code"), {Qt::ALT | Qt::Key_Right}, tr("Alt+Right"))),
      m_copy(makeButton(tr("Copy"), {}, tr("Copies the code and the address of the row")))
{
    m_line->setObjectName("postalLine");
    m_line->setPlaceholderText(tr("Postal code or address"));
    m_line->setAccessibleName(m_line->placeholderText());
    m_line->setClearButtonEnabled(true);
    m_line->installEventFilter(this);
    m_list->setAccessibleName(tr("Places found"));
    m_status->setWordWrap(true);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_previous, m_next, m_copy})
        buttons->addWidget(button);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_line);
    layout->addWidget(m_status);
    layout->addWidget(m_list, 1);
    layout->addLayout(buttons);
    setFocusProxy(m_line);
    connect(m_line, &QLineEdit::textChanged, this, &PostalPage::find);
    connect(m_list, &QListWidget::itemActivated, this, &PostalPage::copy);
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) { m_copy->setEnabled(row >= 0); });
    connect(m_previous, &QPushButton::clicked, this, &PostalPage::goToPrevious);
    connect(m_next, &QPushButton::clicked, this, &PostalPage::goToNext);
    connect(m_copy, &QPushButton::clicked, this, &PostalPage::copy);
}

QString PostalPage::summary() const
{
    const QString first = m_list->count() > 0 ? m_list->item(0)->text() : QString();
    return QStringList({m_line->text(), m_status->text(), first}).join(QStringLiteral("; "));
}

void PostalPage::search(const QString &text)
{
    m_line->setText(text);
}

/* There may be a dictionary now, or none any more. */
void PostalPage::showEvent(QShowEvent *event)
{
    find();
    QWidget::showEvent(event);
}

/* Down leads from the line into the list. */
bool PostalPage::eventFilter(QObject *object, QEvent *event)
{
    const bool isDown = object == m_line && event->type() == QEvent::KeyPress &&
                        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Down;
    if (!isDown || m_list->count() == 0)
        return QWidget::eventFilter(object, event);
    m_list->setFocus();
    return true;
}

void PostalPage::find()
{
    const PostalDictionary dictionary;
    const QString text = m_line->text().simplified();
    if (!dictionary.info())
        showFound({}, tr("A postal code dictionary isn't found."));
    else if (text.isEmpty())
        showFound({}, tr("Type a postal code, or an address from its beginning."));
    else if (looksLikeCode(text))
        findCode(text, dictionary.info());
    else
        findAddress(text, dictionary.info());
}

/* The beginning of a code leads to the first code that begins so, or to the one behind; a code behind the
 * last of its area to the first of the area. */
void PostalPage::findCode(const QString &code, ydic_info *info)
{
    const QString wanted = EncodeZipStr(code);
    if (wanted.size() > 7) {
        showFound({}, tr("A postal code has seven digits."));
        return;
    }
    QString found;
    const QList<KYAddressItem> items = GetKyAddressListFromZip(info, wanted, &found, KyAddressListFind);
    m_code = items.isEmpty() ? wanted : found;
    const QString result = tr("%1: %2").arg(withHyphen(m_code), counted(items.size()));
    if (items.isEmpty())
        showFound({}, tr("There is no postal code at %1 or behind it.").arg(withHyphen(wanted)));
    else if (found == wanted)
        showFound(items, result);
    else if (found > wanted)
        showFound(items, tr("There is no %1. The code behind it is %2").arg(withHyphen(wanted), result));
    else
        showFound(items, tr("There is no %1. Its area begins with %2").arg(withHyphen(wanted), result));
}

void PostalPage::findAddress(const QString &address, ydic_info *info)
{
    const QString wanted = EncodeAdrStr(FullWidthAdrStr(withoutCode(address)));
    bool areSeveral = false;
    const QList<KYAddressItem> items = GetKyAddressListFromAdr(info, wanted, &areSeveral, KyAddressListFind);
    m_code = items.isEmpty() || areSeveral ? QString() : EncodeZipStr(items.first().zip);
    if (items.isEmpty())
        showFound({}, tr("No place fits this address."));
    else if (areSeveral)
        showFound(items, tr("%1 with several codes").arg(counted(items.size())));
    else
        showFound(items, tr("%1: %2").arg(withHyphen(m_code), counted(items.size())));
}

void PostalPage::goToNext()
{
    walk(KyAddressListNext);
}

void PostalPage::goToPrevious()
{
    walk(KyAddressListPrevious);
}

/* At either end the list stays as it is. */
void PostalPage::walk(int mode)
{
    const PostalDictionary dictionary;
    QString found;
    const QList<KYAddressItem> items = GetKyAddressListFromZip(dictionary.info(), m_code, &found, mode);
    if (!items.isEmpty())
        m_line->setText(withHyphen(found));
}

void PostalPage::showFound(const QList<KYAddressItem> &items, const QString &status)
{
    if (items.isEmpty())
        m_code.clear();
    m_list->clear();
    m_list->insertAdrsList(items);
    m_status->setText(status);
    m_previous->setEnabled(!m_code.isEmpty());
    m_next->setEnabled(!m_code.isEmpty());
    m_copy->setEnabled(false);
    if (m_list->count() > 0)
        m_list->setCurrentRow(0);
}

void PostalPage::copy()
{
    const KYAddressItem *item = m_list->currentAdrItem();
    if (!item)
        return;
    const QString code = withHyphen(EncodeZipStr(item->zip));
    QApplication::clipboard()->setText(QStringLiteral("〒%1 %2%3").arg(code, item->state, item->city));
    m_status->setText(tr("Copied: %1").arg(QApplication::clipboard()->text()));
}
