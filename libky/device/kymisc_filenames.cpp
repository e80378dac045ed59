#include "kymisc.h"

#include "descriptor_p.h"
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr const char *TemporaryFolder = "/tmp";
constexpr QStringView ForbiddenCharacters = u".*/|'?;:\"<>\\\u00a5\t";

bool isForbidden(QChar c)
{
    return ForbiddenCharacters.contains(c);
}

} // namespace

const char *KyMisc::getTmpPath(KyMisc::RequiredSize)
{
    return TemporaryFolder;
}

const char *KyMisc::getTmpPath(unsigned long)
{
    return TemporaryFolder;
}

QString KyMisc::getObexTmpPath()
{
    return QString::fromLatin1(TemporaryFolder) + QStringLiteral("/obex");
}

bool KyMisc::invalidFileName(const QString &name)
{
    return std::any_of(name.begin(), name.end(), isForbidden);
}

QString KyMisc::getValidFileName(const QString &name)
{
    QString valid = name;
    std::replace_if(valid.begin(), valid.end(), isForbidden, QLatin1Char('_'));
    return valid;
}

QString KyMisc::getCanonicalPath(const QString &path)
{
    QFileInfo file(path);
    if (file.isSymLink())
        file.setFile(file.symLinkTarget());
    if (file.isDir())
        return QDir(file.absoluteFilePath()).canonicalPath();
    // Callers compare the results: with the root and with missing folders too it is these three put together.
    return file.dir().canonicalPath() + QLatin1Char('/') + file.fileName();
}

bool KyMisc::canCreateTheFile(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const Descriptor file(::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file.get() < 0)
        return errno != EEXIST; // whether it can be written is found out by writing
    ::unlink(name.constData());
    return true;
}
