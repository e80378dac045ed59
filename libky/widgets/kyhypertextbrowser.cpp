#include "kyhypertextbrowser.h"
#include "config.h"
#include "global.h"
#include "linkfinder_p.h"
#include <algorithm>
#include <QImage>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextCursor>
#include <QTextFrame>
#include <utility>

namespace {

constexpr qsizetype MostTableTags = 1000; // opening and closing ones

constexpr QLatin1String MailScheme("mailto:");

// The classic toolkit's numbers, which applications still send.
constexpr int ClassicKeyUp = 0x1013;
constexpr int ClassicKeyDown = 0x1015;

/** The href of the link that was followed, which the cursor is in. A QUrl of it would be another text: it
 * normalises. */
QString hrefUnder(QTextCursor cursor)
{
    cursor.setPosition(cursor.selectionEnd());
    return cursor.charFormat().anchorHref();
}

/** A text that is only read, not laid out, and loads nothing. */
class UnseenDocument : public QTextDocument
{
protected:
    QVariant loadResource(int, const QUrl &) override { return QByteArray(""); }
};

bool hasDeepTables(const QTextDocument &document)
{
    QList<QTextFrame *> level{document.rootFrame()};
    for (int depth = 0; depth <= KyHyperTextBrowser::DeepestTable && !level.isEmpty(); ++depth) {
        QList<QTextFrame *> next;
        for (const QTextFrame *frame : std::as_const(level))
            next += frame->childFrames();
        level = next;
    }
    return !level.isEmpty();
}

/** To lay out a table takes twice the time for each further table that it stands in, so that 300 characters
 * of a mail could keep the application busy for ever. Their text is shown without any tables then; as it
 * stands, where even to read them would take too long. */
QString withoutDeepTables(const QString &html)
{
    const qsizetype tags = html.count(QLatin1String("table"), Qt::CaseInsensitive); // as many, or fewer
    if (tags <= KyHyperTextBrowser::DeepestTable)
        return html;
    QString text = html;
    if (tags <= MostTableTags) {
        UnseenDocument document;
        document.setHtml(html);
        if (!hasDeepTables(document))
            return html;
        text = document.toPlainText();
    }
    return QLatin1String("<p style=\"white-space: pre-wrap\">") + text.toHtmlEscaped() +
           QLatin1String("</p>");
}

bool isSafeArgument(const QString &argument)
{
    const auto isControl = [](QChar character) { return character.category() == QChar::Other_Control; };
    return !argument.startsWith(u'-') && std::none_of(argument.begin(), argument.end(), isControl);
}

void start(const QString &program, const QString &argument)
{
    if (isSafeArgument(argument))
        (void)Global::execute(program, argument);
}

} // namespace

KyHyperTextBrowser::KyHyperTextBrowser(QWidget *parent, const char *name) : QTextBrowser(parent)
{
    setObjectName(QString::fromUtf8(name));
    setOpenLinks(false);
    connect(this, &QTextBrowser::anchorClicked, this, [this](const QUrl &link) {
        const QString href = hrefUnder(textCursor());
        // They differ when the stylus is put down on one link and lifted from another.
        if (QUrl(href) == link)
            setSource(LinkFinder::decodedLink(href));
    });
}

void KyHyperTextBrowser::setHyperText(QString &text, int flags)
{
    const QString original = text;
    QString copy = text;
    QString &linked = (flags & ChangeText) != 0 ? text : copy;
    if ((flags & EmailLinks) != 0)
        setEmailtoLink(linked);
    if ((flags & UrlLinks) != 0)
        setURLtoLink(linked);
    setHtml(withoutDeepTables((flags & EmailLinks) != 0 ? LinkFinder::withoutClosingBrackets(linked, original)
                                                        : linked));
}

void KyHyperTextBrowser::setEmailtoLink(QString &text)
{
    text = LinkFinder::withEmailLinks(text);
}

void KyHyperTextBrowser::setURLtoLink(QString &text)
{
    text = LinkFinder::withUrlLinks(text);
}

void KyHyperTextBrowser::setSource(const QString &link)
{
    Config config(QStringLiteral("haldenqpe"));
    config.setGroup(QStringLiteral("Helpers"));
    const qsizetype place = link.indexOf(MailScheme);
    if (place >= 0)
        start(config.readEntry(QStringLiteral("mailer"), QStringLiteral("kliomu")),
              link.mid(place + MailScheme.size()));
    else
        start(config.readEntry(QStringLiteral("browser"), QStringLiteral("opera")), link);
}

void KyHyperTextBrowser::clear()
{
    setHtml(QString());
}

void KyHyperTextBrowser::keyPressEvent(QKeyEvent *event)
{
    QScrollBar *bar = verticalScrollBar();
    const int line = fontMetrics().lineSpacing();
    switch (event->key()) {
    case Qt::Key_Up:
    case ClassicKeyUp:
        bar->setValue(bar->value() - line);
        break;
    case Qt::Key_Down:
    case ClassicKeyDown:
        bar->setValue(bar->value() + line);
        break;
    default:
        QTextBrowser::keyPressEvent(event);
    }
}

void KyHyperTextBrowser::doSetSource(const QUrl &name, QTextDocument::ResourceType)
{
    if (!name.isEmpty()) // reload() of a view that never had a source
        setSource(name.toString());
}

QVariant KyHyperTextBrowser::loadResource(int type, const QUrl &)
{
    // For want of something the rich text would load the file by itself.
    if (type != QTextDocument::ImageResource)
        return QByteArray("");
    QImage nothing(1, 1, QImage::Format_ARGB32_Premultiplied);
    nothing.fill(Qt::transparent);
    return nothing;
}
