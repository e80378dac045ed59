#include "kypdatamanager.h"
#include "kymisc.h"
#include "kypdatamanager_p.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"
#include <QCoreApplication>
#include <QFile>
#include <QPointer>

namespace KyPDtm {

namespace {

constexpr int OpenAttempts = 9;
constexpr int AttemptWait = 100; // ms, of events between two attempts
constexpr auto SystemChannel = "QPE/System";
constexpr auto CloseFileMessage = "closeFile(QString,QString)";
constexpr auto OpenFileMessage = "openFile(QString,QString)";
constexpr auto CategoryRemovedMessage = "categoryRemoved(int)";

QString ownName()
{
    return QPEApplication::applicationNameOf(QCoreApplication::instance());
}

/** What closeFile and openFile say. */
struct FileMessage
{
    QString path; ///< empty: all boxes
    bool isForeign = false;
};

/** A message that is cut short is nobody's. */
FileMessage fileMessage(const QByteArray &data)
{
    FileMessage message;
    QString sender;
    QCopArguments arguments(data);
    arguments >> message.path >> sender;
    message.isForeign = arguments.status() == QDataStream::Ok && sender != ownName();
    return message;
}

/** The category that a message names; 0, which is none, when it is cut short. */
int removedCategory(const QByteArray &data)
{
    qint32 category = 0;
    QCopArguments(data) >> category;
    return category;
}

} // namespace

void InitLanguageEnvironment()
{
    static QByteArray language;
    if (!language.isEmpty())
        return;
    language = KyMisc::getLanguage().toUtf8();
    DtmSetLanguage(language.constData());
}

KyPDataManager::KyPDataManager(const char *boxFile, QWidget *parent, bool readOnly)
    : d(std::make_unique<KyPDataManagerPrivate>())
{
    InitLanguageEnvironment();
    if (QCoreApplication::instance()) {
        const auto *channel = new QCopChannel(SystemChannel, this);
        connect(channel, &QCopChannel::received, this, &KyPDataManager::systemMessage);
    }
    d->ascendent = true;
    if (!d->setBoxPath(boxFile)) {
        qDebug("invalid boxFName");
        return;
    }
    if (parent)
        checkGarbageAlert(boxFile, parent);
    if (!open(readOnly)) {
        qDebug("could not open box %s", boxFile);
        return;
    }
    d->extBoxInfo = _PioNewExtBoxInfo(boxFile, d->boxHandle);
    if (!d->extBoxInfo) {
        qDebug("could not create box info");
        return;
    }
    d->readIndexTable();
    if (!d->masterIndex)
        qDebug("could not create index info");
}

KyPDataManager::~KyPDataManager()
{
    cancelEditCard();
    close();
    if (d->extBoxInfo)
        _PioDisposeExtBoxInfo(d->extBoxInfo);
}

bool KyPDataManager::open(bool readOnly)
{
    if (d->waitingOpenAgain) {
        qDebug("%s is waiting for open again.", d->boxPath().constData());
        return false;
    }
    // An empty path in closeFile would take every box of the device away from everybody.
    if (d->boxHandle || !d->boxName[0])
        return false;
    d->readOnly = readOnly;
    return openInMode();
}

bool KyPDataManager::openInMode()
{
    if (d->readOnly || !QCoreApplication::instance())
        return d->openHandle();
    const QPointer<KyPDataManager> self(this);
    for (int attempt = 0; attempt < OpenAttempts; ++attempt) {
        if (d->openHandle())
            break;
        QCoreApplication::processEvents(QEventLoop::AllEvents, AttemptWait);
        if (!self)
            return false;
        if (d->boxHandle || d->waitingOpenAgain) // a slot opened it in the meantime
            return isOpened();
    }
    KyMisc::requestCloseFile(d->boxPathText());
    return isOpened();
}

bool KyPDataManager::close()
{
    if (!d->boxHandle || !d->closeHandle())
        return false;
    if (!d->waitingOpenAgain && QCoreApplication::instance())
        KyMisc::requestOpenFile(d->boxPathText());
    return true;
}

void KyPDataManager::systemMessage(const QByteArray &message, const QByteArray &data)
{
    if (QCoreApplication::instance() && message == CategoryRemovedMessage) {
        if (const int category = removedCategory(data))
            removeCategoryNowOrLater(category);
        return;
    }
    const bool isClose = message == CloseFileMessage;
    if (!QCoreApplication::instance() || (!isClose && message != OpenFileMessage))
        return;
    const FileMessage file = fileMessage(data);
    const bool isForAll = file.path.isEmpty();
    if (!file.isForeign || (!isForAll && file.path != d->boxPathText()))
        return;
    if (isClose && isOpened() && !d->readOnly)
        d->letGo(isForAll);
    else if (!isClose && d->waitingOpenAgain && (isForAll || !d->closedForAll)) {
        d->waitingOpenAgain = false;
        d->closedForAll = false;
        if (!isOpened()) // else it could not let go
            openInMode();
    }
}

void KyPDataManagerPrivate::letGo(bool forAll)
{
    waitingOpenAgain = true;
    closedForAll = forAll;
    closeHandle();
}

bool KyPDataManagerPrivate::setBoxPath(const char *path)
{
    const char *base = path ? DtmGetBaseNamePtr(path) : nullptr;
    if (!base || strlen(path) >= NameRoom)
        return false;
    memcpy(boxDir, path, size_t(base - path));
    qstrncpy(boxName, base, NameRoom);
    return true;
}

QByteArray KyPDataManagerPrivate::boxPath() const
{
    return QByteArray(boxDir) + boxName;
}

QString KyPDataManagerPrivate::boxPathText() const
{
    return QFile::decodeName(boxPath());
}

bool KyPDataManager::isOpened() const
{
    return d->boxHandle != 0;
}

quint32 KyPDataManager::boxHandle() const
{
    return d->boxHandle;
}

unsigned long KyPDataManager::garbageSize() const
{
    return d->garbage();
}

bool KyPDataManager::checkFile(const char *file)
{
    InitLanguageEnvironment();
    return _DTMFileCheckLevel(file, 255) == PdtmOk;
}

bool KyPDataManager::deleteFile(const char *boxFile)
{
    InitLanguageEnvironment();
    return _BoxDelete(boxFile) == PdtmOk;
}

int KyPDataManager::checkDtmGlobal()
{
    InitLanguageEnvironment();
    return CheckFINFO();
}

} // namespace KyPDtm
