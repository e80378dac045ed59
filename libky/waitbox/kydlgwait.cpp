#include "kydlgwait.h"
#include "kymisc.h"
#include "resource.h"
#include <QEventLoop>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QShowEvent>
#include <QTimer>
#include <QTimerEvent>

namespace {

// Milliseconds.
constexpr int PaintLimit = 500;
constexpr int CloseDelay = 1;

QLabel *iconLabel(QWidget *parent)
{
    const int side = 32 * KyMisc::getResolutionScale();
    auto *icon = new QLabel(parent);
    icon->setPixmap(Resource::loadPixmap(QStringLiteral("wait")));
    icon->setFixedSize(side, side);
    return icon;
}

QLabel *textLabel(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    label->setWordWrap(true);
    label->setMinimumWidth(1); // else a single long word, such as a path, would widen the box
    return label;
}

} // namespace

KyDlgWait::KyDlgWait(QWidget *parent, const QString &text, bool withIcon, bool autoClose)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), closesItself(autoClose)
{
    const int scale = KyMisc::getResolutionScale();
    setObjectName(tr("Wait"));
    setModal(autoClose);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(5 * scale);
    row->addSpacing(10 * scale);
    if (withIcon) {
        row->addWidget(iconLabel(this));
        row->addSpacing(10 * scale);
    }
    row->addWidget(textLabel(text, this));
    const int width = 160 * scale;
    resize(width, qMax(40 * scale, row->totalHeightForWidth(width)));
    row->activate();
}

KyDlgWait::~KyDlgWait() = default;

int KyDlgWait::exec()
{
    if (!closesItself)
        return QDialog::exec();
    const QPointer<KyDlgWait> self(this); // events may delete the parent, and the box with it
    show();
    closing.stop(); // the box would be gone before it could be seen
    waitUntilPainted();
    if (!self)
        return Rejected;
    setResult(Accepted);
    // Hiding it now would take it off the screen before the work has begun; a box that outlives the work must
    // not lock the application, though.
    closing.start(CloseDelay, this);
    return Accepted;
}

void KyDlgWait::waitUntilPainted()
{
    QEventLoop loop;
    update(); // it may be on the screen already
    connect(this, &KyDlgWait::painted, &loop, &QEventLoop::quit);
    QTimer::singleShot(PaintLimit, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void KyDlgWait::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (closesItself && !event->spontaneous())
        closing.start(CloseDelay, this);
}

void KyDlgWait::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != closing.timerId())
        return QDialog::timerEvent(event);
    closing.stop();
    accept();
}

/** There is no title bar: a line tells the box from what is behind it. */
void KyDlgWait::paintEvent(QPaintEvent *event)
{
    QDialog::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    emit painted(QPrivateSignal());
}
