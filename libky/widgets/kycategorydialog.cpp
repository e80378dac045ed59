#include "kycategorydialog.h"
#include "categories.h"
#include "kycategoryedit_p.h"
#include "kymisc.h"
#include "warning_p.h"
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

namespace {

constexpr int LongestName = 48;

// All times the scale.
constexpr QSize DialogSize(200, 95);
constexpr QRect PromptArea(10, 8, 180, 28);
constexpr QRect LineArea(10, 40, 180, 20);
constexpr QRect ButtonArea(10, 64, 180, 27);

void place(QWidget *widget, const QRect &area)
{
    const int scale = KyMisc::getResolutionScale();
    widget->setGeometry(QRect(area.topLeft() * scale, area.size() * scale));
}

/** Without the half of a character that the end of the line has left of a pasted one. */
QString wholeCharacters(const QString &text)
{
    const bool isCut = text.size() == LongestName && text.back().isHighSurrogate();
    return isCut ? text.chopped(1) : text;
}

} // namespace

KyCategoryDialog::KyCategoryDialog(QWidget *parent, const QString &caption, const QString &prompt,
                                   const QString &text, KyCategoryEditPrivate *categories)
    : QDialog(parent), m_text(text), edit(new QLineEdit(this)), d(categories)
{
    setModal(true);
    setWindowTitle(caption);
    setFixedSize(DialogSize * KyMisc::getResolutionScale());
    auto *label = new QLabel(prompt, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    place(label, PromptArea);
    place(edit, LineArea);
    edit->setMaxLength(LongestName);
    edit->setText(text);
    edit->selectAll();
    edit->setFocus();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    place(buttons, ButtonArea);
    connect(buttons, &QDialogButtonBox::accepted, this, &KyCategoryDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &KyCategoryDialog::reject);
}

QString KyCategoryDialog::text() const
{
    return m_text;
}

void KyCategoryDialog::done(int result)
{
    if (result != Accepted)
        return QDialog::done(result);
    const QString name = wholeCharacters(edit->text()).trimmed();
    const QString reason = refusal(name);
    if (reason.isNull()) {
        m_text = name;
        return QDialog::done(Accepted);
    }
    const QPointer<KyCategoryDialog> self(this);
    showWarning(this, tr("Error"), reason);
    if (!self)
        return;
    edit->selectAll();
    edit->setFocus();
}

/** Why a name can't be used; null when it can. */
QString KyCategoryDialog::refusal(const QString &name) const
{
    if (name == tr("All") || name == tr("Unfiled") || d->categories->exists(name))
        return tr("This category name is already exist.");
    if (!name.isEmpty() && !Categories::isValidName(name))
        return tr("This category name has characters that can't be used.");
    return {};
}

void KyCategoryDialog::reject()
{
    QDialog::reject();
}
