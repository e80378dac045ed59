#include "global.h"
#include "qcopchannel.h"
#include "qpeapplication.h"
#include <QFileInfo>
#include <QProcess>

namespace {

constexpr auto TaskBar = "QPE/TaskBar";

/** Path of a program of the platform; empty when there is none of that name. */
QString pathOfProgram(const QString &name)
{
    if (name.isEmpty() || name == QLatin1String("..") || name.contains(QLatin1Char('/')))
        return {};
    const QFileInfo file(QPEApplication::qpeDir() + QLatin1String("bin/") + name);
    return file.isFile() && file.isExecutable() ? file.absoluteFilePath() : QString();
}

} // namespace

void Global::showInputMethod()
{
    QCopChannel::send(TaskBar, "showInputMethod()");
}

void Global::hideInputMethod()
{
    QCopChannel::send(TaskBar, "hideInputMethod()");
}

bool Global::execute(const QString &program, const QString &argument)
{
    const QString path = pathOfProgram(program);
    // The system would end the argument at a zero character.
    if (path.isEmpty() || argument.contains(QChar::Null))
        return false;
    return QProcess::startDetached(path, argument.isNull() ? QStringList() : QStringList(argument));
}
