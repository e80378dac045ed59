#include "kyzipconvertor.h"
#include "kymisc.h"
#include "kyzipconvertor_p.h"
#include "zipconversion.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// In units of the scale.
constexpr int Width = 200;
constexpr int Spacing = 5;
constexpr int LabelSpacing = 40;

struct AnswerButton
{
    QMessageBox::StandardButton button;
    QString text;
};

/** @param buttons the first is the default one */
int showWarning(QWidget *parent, const QString &text, const QList<AnswerButton> &buttons)
{
    QMessageBox box(QMessageBox::Warning, parent->windowTitle(), text, QMessageBox::NoButton, parent);
    for (const AnswerButton &answer : buttons)
        box.addButton(answer.button)->setText(answer.text);
    box.setDefaultButton(buttons.first().button);
    return box.exec();
}

} // namespace

KyZIPConvertor::KyZIPConvertor(QWidget *parent, bool warn, const char *name, bool modal)
    : QDialog(parent), d(new KyZIPPrivate)
{
    setObjectName(QLatin1String(name));
    setModal(modal);
    setWindowTitle(tr("ZIP convertor"));
    init(warn);
}

KyZIPConvertor::~KyZIPConvertor()
{
    if (d->info)
        ZipFin(d->info);
}

void KyZIPConvertor::init(bool warn)
{
    if (ZipInit(&d->info) >= 0)
        return buildWidgets();
    if (d->info)
        ZipFin(d->info);
    d->info = nullptr;
    if (warn)
        warnOfFailure(tr("A postal code dictionary\nisn't found."));
}

void KyZIPConvertor::warnOfFailure(const QString &text)
{
    showWarning(this, text, {{QMessageBox::Ok, tr("OK")}});
}

void KyZIPConvertor::buildWidgets()
{
    const int scale = KyMisc::getResolutionScale();
    // The first one made has the focus, and the keys, first.
    buildListBox();
    auto *layout = new QVBoxLayout(this);
    auto *labelRow = new QHBoxLayout;
    auto *buttonRow = new QHBoxLayout;
    layout->setSpacing(Spacing * scale);
    layout->addLayout(labelRow);
    layout->addWidget(d->listBox);
    layout->addLayout(buttonRow);

    buttonRow->addWidget(pushButton(tr("Address"), &KyZIPConvertor::slotAdrClicked));
    buttonRow->addWidget(pushButton(tr("ZIP"), &KyZIPConvertor::slotZipClicked));
    QPushButton *both = pushButton(tr("Adr & ZIP"), &KyZIPConvertor::slotAdrZipClicked);
    both->setDefault(true); // as the return key takes both in the list
    buttonRow->addWidget(both);

    d->zipLabel = new QLabel(this);
    d->stateBox = new QCheckBox(tr("state"), this);
    labelRow->addWidget(d->zipLabel, 2);
    labelRow->addSpacing(LabelSpacing * scale);
    labelRow->addWidget(d->stateBox, 1);

    // Scaled twice: the text of a row grows with the resolution, and so does what it has room for.
    const int width = Width * scale * scale;
    resize(qMin(width, KyMisc::getMaximizedWidgetInfo().width()), sizeHint().height());
}

void KyZIPConvertor::buildListBox()
{
    d->listBox = new KyAddressListBox(this);
    d->listBox->installEventFilter(this);
    // The signal of the selection comes before the current row has changed.
    connect(d->listBox, &QListWidget::currentRowChanged, this, &KyZIPConvertor::slotSelectChanged);
    connect(d->listBox, &QListWidget::itemClicked, this, &KyZIPConvertor::slotClicked);
    connect(d->listBox, &QListWidget::itemActivated, this, &KyZIPConvertor::slotClicked);
}

QPushButton *KyZIPConvertor::pushButton(QString text, void (KyZIPConvertor::*slot)())
{
    text.replace(QLatin1Char('&'), QLatin1String("&&")); // it is no mark of a shortcut
    auto *button = new QPushButton(text, this);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

bool KyZIPConvertor::isExecute() const
{
    return d->info != nullptr;
}

int KyZIPConvertor::convertor()
{
    if (!isExecute() || !settingData())
        return 0;
    d->listBox->setFocus();
    return exec();
}

void KyZIPConvertor::setSearchMode(KyZIPConvertor::SearchMode mode)
{
    d->searchMode = mode;
}

void KyZIPConvertor::setZip(const QString &zip)
{
    d->zip = zip;
}

void KyZIPConvertor::setAddress(const QString &address)
{
    d->address = address;
}

void KyZIPConvertor::setStateAdoption(bool adopt)
{
    if (d->stateBox)
        d->stateBox->setChecked(adopt);
}

QString KyZIPConvertor::selectedZip() const
{
    const QString code = isSelectZip() && d->zipLabel ? EncodeZipStr(d->zipLabel->text()) : QString();
    return code.isNull() ? code : QString(code).insert(3, QLatin1Char('-'));
}

QString KyZIPConvertor::selectedCity() const
{
    const KYAddressItem *item = takenItem();
    return item ? item->city : QString();
}

QString KyZIPConvertor::selectedState() const
{
    const KYAddressItem *item = takenItem();
    return item && d->stateBox->isChecked() ? item->state : QString();
}

/** Null when the user didn't take the address. */
const KYAddressItem *KyZIPConvertor::takenItem() const
{
    return isSelectAddress() && d->listBox ? d->listBox->currentAdrItem() : nullptr;
}

bool KyZIPConvertor::isSelectZip() const
{
    return d->selectType == TakeZip || d->selectType == TakeBoth;
}

bool KyZIPConvertor::isSelectAddress() const
{
    return d->selectType == TakeAddress || d->selectType == TakeBoth;
}

void KyZIPConvertor::slotAdrClicked()
{
    d->selectType = TakeAddress;
    accept();
}

void KyZIPConvertor::slotZipClicked()
{
    d->selectType = TakeZip;
    accept();
}

void KyZIPConvertor::slotAdrZipClicked()
{
    d->selectType = TakeBoth;
    accept();
}

void KyZIPConvertor::slotClicked(QListWidgetItem *item)
{
    // Where one tap activates a row, it is told of twice.
    if (item && isVisible())
        accept();
}

void KyZIPConvertor::slotSelectChanged()
{
    const KYAddressItem *item = d->listBox->currentAdrItem();
    if (!item)
        return;
    d->zipLabel->setText(EncodeZipLabel(item->zip));
    d->zipLabel->repaint();
}

bool KyZIPConvertor::settingData()
{
    return d->searchMode == ZipSearch ? searchZip() : searchAddress();
}

bool KyZIPConvertor::searchZip()
{
    QString found;
    const QList<KYAddressItem> items = GetKyAddressListFromZip(d->info, d->zip, &found, KyAddressListFind);
    if (items.isEmpty()) {
        warnOfFailure(tr("There is a mistake\nin the input of the postal code."));
        return false;
    }
    d->multiCode = false;
    settingAdrsList(items, false);
    return true;
}

bool KyZIPConvertor::searchAddress()
{
    const QString address = EncodeAdrStr(FullWidthAdrStr(d->address));
    bool multiCode = false;
    const QList<KYAddressItem> items =
        GetKyAddressListFromAdr(d->info, address, &multiCode, KyAddressListFind);
    if (items.isEmpty()) {
        warnOfFailure(tr("An applicable postal code \nisn't found."));
        return false;
    }
    d->multiCode = multiCode;
    settingAdrsList(items, false);
    return true;
}

void KyZIPConvertor::settingAdrsList(const QList<KYAddressItem> &items, bool repaintNow)
{
    d->listBox->clear();
    d->listBox->insertAdrsList(items);
    d->listBox->setCurrentRow(0);
    if (repaintNow)
        d->listBox->viewport()->repaint();
}

bool KyZIPConvertor::eventFilter(QObject *object, QEvent *event)
{
    if (object != d->listBox || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(object, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key != Qt::Key_Left && key != Qt::Key_Right)
        return QDialog::eventFilter(object, event);
    if (!mayLeaveAddress())
        return false;
    showNeighbour(key == Qt::Key_Left ? KyAddressListPrevious : KyAddressListNext);
    return true;
}

/** Neighbours of one code take the place of all that fit the address: the user is asked. */
bool KyZIPConvertor::mayLeaveAddress()
{
    if (!d->multiCode)
        return true;
    const int answer = showWarning(this, tr("Do you cancel focusing\nof the address?"),
                                   {{QMessageBox::Yes, tr("Yes")}, {QMessageBox::No, tr("No")}});
    d->multiCode = answer != QMessageBox::Yes;
    return !d->multiCode;
}

void KyZIPConvertor::showNeighbour(int mode)
{
    QString found;
    const QList<KYAddressItem> items = GetKyAddressListFromZip(d->info, d->zipLabel->text(), &found, mode);
    if (!items.isEmpty())
        settingAdrsList(items, true);
}
