// Text from a mail: what becomes of it is what the slow steps make of it, as long as it is short enough for
// them.
#include "../tests/widgets/linksteps.h"
#include "fuzzsupport.h"
#include "linkfinder_p.h"

namespace {

constexpr qsizetype LongestForSteps = 2000;

/** No link can hold more of these than the library allows. */
bool canNestDeeply(const QString &text)
{
    return text.count(QLatin1String("http"), Qt::CaseInsensitive) > LinkFinder::MaxNestedLinks;
}

void compareWithSteps(const QString &text)
{
    QString emailLinks = text;
    LinkSteps::emailLinks(emailLinks);
    require(LinkFinder::withEmailLinks(text) == emailLinks);

    QString bothLinks = emailLinks;
    LinkSteps::urlLinks(bothLinks);
    require(LinkFinder::withUrlLinks(emailLinks) == bothLinks);
}

/** Each link repeats its address once in the href, where an encoded character takes three, and once behind.
 */
void checkSize(const QString &text)
{
    const qsizetype ofAddress = 4 + qsizetype(sizeof "<a href=\"mailto:\"></a>");
    require(LinkFinder::withEmailLinks(text).size() <= (text.size() + 1) * ofAddress);
    const qsizetype ofUrl = LinkFinder::MaxNestedLinks * (6 + 2 * qsizetype(sizeof "<a href=\"\"></a>"));
    require(LinkFinder::withUrlLinks(text).size() <= (text.size() + 1) * ofUrl);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    checkSize(text);
    if (text.size() <= LongestForSteps && !canNestDeeply(text))
        compareWithSteps(text);
    const QString linked = LinkFinder::withEmailLinks(text);
    require(LinkFinder::withoutClosingBrackets(linked, text).size() + text.count(u'@') >= linked.size());
    require(LinkFinder::decodedLink(text).size() <= text.size());
    return 0;
}
