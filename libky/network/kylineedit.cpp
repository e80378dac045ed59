#include "kylineedit.h"
#include "jpnfep.h"
#include "kylineedit_p.h"
#include <iterator>
#include <optional>

namespace {

constexpr auto NumberPad = "JpnNumPad";

struct InputMethod
{
    const char *name;
    int mode;
    std::optional<bool> flag; ///< none leaves the one that is set
};

constexpr InputMethod Methods[] = {
    {"AutoPad", 0, std::nullopt},
    {"Keyboard", 0x48, false},
    {NumberPad, 0x48, false},
    {"CRIM", 0x82, true},
};

} // namespace

bool KYLineEdit::padControl = false;
bool KYLineEdit::numlockControl = false;

KYLineEdit::KYLineEdit(QWidget *parent, const char *name)
    : QLineEdit(parent), d(std::make_unique<KYLineEditPrivate>())
{
    setObjectName(QString::fromUtf8(name));
}

KYLineEdit::~KYLineEdit() = default;

void KYLineEdit::editorMode(KYLineEdit::inputMode mode, QValidator *validator)
{
    if (validator)
        setValidator(validator);
    const auto row = size_t(mode);
    if (row >= std::size(Methods))
        return;
    const InputMethod &method = Methods[row];
    setPadMode(QLatin1String(method.name), method.mode, method.flag.value_or(d->padFlag));
}

void KYLineEdit::editorMode(KYLineEdit::inputMode mode, int maxLength, QValidator *validator)
{
    editorMode(mode, validator);
    setMaxLength(maxLength);
}

void KYLineEdit::setPassword(const QString &text)
{
    setText(text);
    if (!text.isEmpty())
        setEchoMode(Password);
}

void KYLineEdit::setPadMode(const QString &name, int mode, bool flag)
{
    d->padName = name;
    d->padMode = mode;
    d->padFlag = flag;
}

void KYLineEdit::setPadName(const QString &name)
{
    d->padName = name;
}

QString KYLineEdit::padName() const
{
    return d->padName;
}

void KYLineEdit::setChangeAtOnce(bool once)
{
    d->changeAtOnce = once;
}

void KYLineEdit::setPadControl(bool control)
{
    padControl = control;
}

void KYLineEdit::setNumLockControl(bool control)
{
    numlockControl = control;
}

void KYLineEdit::bringUpInputMethod()
{
    if (d->padName.isEmpty()) {
        JpnFep::autoShowInputMethod();
        return;
    }
    JpnFep::autoChangeInputMethod(d->padName);
    JpnFep::setInputMode(d->padMode, d->padFlag);
    if (d->changeAtOnce)
        d->padName = QString();
}

void KYLineEdit::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (padControl && !d->padName.isNull())
        bringUpInputMethod();
    if (numlockControl && d->padName == QLatin1String(NumberPad))
        d->numLockUsed = true;
}

void KYLineEdit::focusOutEvent(QFocusEvent *event)
{
    d->numLockUsed = false;
    QLineEdit::focusOutEvent(event);
}
