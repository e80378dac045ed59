#ifndef KYCATEGORYDIALOG_H
#define KYCATEGORYDIALOG_H

#include "kyexport.h"
#include <QDialog>
#include <QString>

class KyCategoryEditPrivate;
class QLineEdit;

/** Asks for the name of a category, of at most 48 characters. A name that exists is refused, which keeps the
 * dialog open; so are tr("All") and tr("Unfiled"), the very name that a category has, and one that
 * KyCategories can't hold. Blanks around the name don't count. Enter accepts, Escape rejects. */
class KY_EXPORT KyCategoryDialog : public QDialog
{
    Q_OBJECT
public:
    /** @param text what the line holds at first, selected @param categories of the edit that asks; must
     * outlive the dialog */
    KyCategoryDialog(QWidget *parent, const QString &caption, const QString &prompt, const QString &text,
                     KyCategoryEditPrivate *categories);

    /** The name that was typed and accepted, which may be empty; before that, what the line held at first. */
    [[nodiscard]] QString text() const;

public slots:
    /** @param result QDialog::Accepted takes the name, unless it is refused; any other value closes the
     * dialog with that result */
    void done(int result) override;
    void reject() override; ///< closes the dialog with nothing changed

private:
    Q_DISABLE_COPY_MOVE(KyCategoryDialog)
    [[nodiscard]] QString refusal(const QString &name) const;

    QString m_text;
    QLineEdit *edit;
    KyCategoryEditPrivate *d;
};

#endif
