#ifndef KYHYPERTEXTBROWSER_H
#define KYHYPERTEXTBROWSER_H

#include "kyexport.h"
#include <QTextBrowser>

/**
 * Shows rich text in which e-mail and web addresses have become links, and hands a link that the user follows
 * to the mail or web application of the device. The text may come from anywhere:
 *
 *     QString text = mail.body().toHtmlEscaped();
 *     browser->setHyperText(text, KyHyperTextBrowser::EmailLinks | KyHyperTextBrowser::UrlLinks);
 *
 * What is inserted stays inside its attribute, whatever the address holds. Otherwise the text is shown as it
 * is; but no picture, style sheet or other file is ever loaded for it. It should hold no links yet: addresses
 * inside a tag would be wrapped too.
 *
 * The programs are the entries `mailer` ("kliomu" by default) and `browser` ("opera") in the group "Helpers"
 * of the settings "haldenqpe". Links that the text itself brings, of any scheme, go to them as well.
 */
class KY_EXPORT KyHyperTextBrowser : public QTextBrowser
{
    Q_OBJECT
public:
    /** What setHyperText() does, to be combined. */
    enum HyperTextFlag {
        UrlLinks = 1,   ///< web addresses become links
        EmailLinks = 2, ///< e-mail addresses become links
        ChangeText = 16 ///< the caller's string gets the links too
    };

    static constexpr int DeepestTable = 10; ///< tables inside one another that are shown as tables

    explicit KyHyperTextBrowser(QWidget *parent = nullptr, const char *name = nullptr);

    /**
     * Shows a text, always as rich text: setEmailtoLink(), then setURLtoLink(), as far as they are asked for.
     * Of an address in angle brackets neither bracket is shown. Of a text with more than DeepestTable tables
     * inside one another only the plain text is, without links: the view would never get ready. It takes its
     * time for long texts, too; applications cut those that they have from strangers.
     * @param text changed only with ChangeText
     * @param flags values of HyperTextFlag
     */
    void setHyperText(QString &text, int flags);

    /**
     * Wraps every e-mail address of @p text in a link. An address is what stands around an "@" up to a blank,
     * a line break, one of ,;:()<>" or a backslash, anything but printable ASCII, or one of the entities &lt;
     * &gt; &amp; and &quot; behind it. A "<" in front becomes a blank, so that <name@host> is no tag.
     */
    virtual void setEmailtoLink(QString &text);
    /**
     * Wraps every web address of @p text in a link. It goes up to a "<br>" or anything but printable ASCII.
     * The first is the first "http://", or else the first "https://". In the href the characters " < and >
     * are percent-encoded; the program gets them as they were. Addresses inside another, such as
     * "http://a/http://b", are links of their own, 16 at most.
     */
    virtual void setURLtoLink(QString &text);

public slots:
    /**
     * Starts the program for a link, which gets it as its one argument: the mailer with what follows the
     * first "mailto:", wherever that stands; else the browser with the whole link. The view stays as it is.
     * Nothing happens when the program is missing, nor for an argument that begins with '-', which would be
     * an option, or has a control character in it.
     */
    virtual void setSource(const QString &link);
    /** Empties the view. */
    void clear();

protected:
    /** Up and down scroll by a line. */
    void keyPressEvent(QKeyEvent *event) override;
    void doSetSource(const QUrl &name, QTextDocument::ResourceType type) override; ///< as setSource()
    QVariant loadResource(int type,
                          const QUrl &name) override; ///< an invisible picture or an empty file, always
};

#endif
