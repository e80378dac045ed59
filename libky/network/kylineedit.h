#ifndef KYLINEEDIT_H
#define KYLINEEDIT_H

#include "kyexport.h"
#include <memory>
#include <QLineEdit>

struct KYLineEditPrivate;

/**
 * A line edit with an input method of its own, which comes up when the edit gets the focus: on a device that
 * is written on, and once setPadControl() has allowed it.
 */
class KY_EXPORT KYLineEdit : public QLineEdit
{
    Q_OBJECT
public:
    /** What is typed into the edit, and with which input method. */
    enum inputMode : int {
        AutoPad = 0,  ///< any text, with "AutoPad"; leaves the switch of the front-end processor as it is set
        Keyboard = 1, ///< letters, with "Keyboard"; switches the front-end processor off
        JpnNumPad = 2, ///< numbers, with "JpnNumPad"; switches the front-end processor off
        Crim = 3       ///< any text, with "CRIM"; switches the front-end processor on
    };

    explicit KYLineEdit(QWidget *parent, const char *name = nullptr);
    ~KYLineEdit() override;

    /** Sets the input method, and the validator unless that is null. Another @p mode sets the validator only.
     * @param validator is not owned */
    void editorMode(KYLineEdit::inputMode mode, QValidator *validator);
    /** The same, and the largest length. */
    void editorMode(KYLineEdit::inputMode mode, int maxLength, QValidator *validator);
    /** Sets a text that is not to be read. With an empty text, what is typed shows as before. */
    void setPassword(const QString &text);

    /** Sets the input method. @param name see setPadName() @param mode, flag for JpnFep::setInputMode() */
    void setPadMode(const QString &name, int mode, bool flag);
    /** @param name of the input method; null leaves the input method alone, an empty one shows the present
     * one
     */
    void setPadName(const QString &name);
    [[nodiscard]] QString padName() const;
    /** Makes only the next focus choose the input method, after which padName() is null. */
    void setChangeAtOnce(bool once);

    /** Allows the edits of this process to choose input methods; they don't from the start. */
    static void setPadControl(bool control);
    /** Makes the edits of this process note whether they use the number pad; they don't from the start. */
    static void setNumLockControl(bool control);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void bringUpInputMethod();

    static bool padControl;
    static bool numlockControl;

    const std::unique_ptr<KYLineEditPrivate> d;
};

#endif
