#include "kycategorywidget.h"
#include "kycategoryedit.h"
#include <QVBoxLayout>

KyCategoryWidget::KyCategoryWidget(QWidget *parent, const char *name)
    : KyCategoryWidget({}, QString(), QString(), parent, name)
{
}

KyCategoryWidget::KyCategoryWidget(const QList<int> &ids, const QString &appName, QWidget *parent,
                                   const char *name)
    : KyCategoryWidget(ids, appName, appName, parent, name)
{
}

KyCategoryWidget::KyCategoryWidget(const QList<int> &ids, const QString &appName, const QString &visibleName,
                                   QWidget *parent, const char *name)
    : QWidget(parent), edit(new KyCategoryEdit(ids, appName, visibleName, this))
{
    setObjectName(QString::fromUtf8(name));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(edit);
}

void KyCategoryWidget::setCategories(const QList<int> &ids, const QString &appName)
{
    setCategories(ids, appName, appName);
}

void KyCategoryWidget::setCategories(const QList<int> &ids, const QString &appName,
                                     const QString &visibleName)
{
    edit->setCategories(ids, appName, visibleName);
}

QList<int> KyCategoryWidget::newCategories()
{
    return edit->newCategories();
}

void KyCategoryWidget::kludge()
{
    edit->kludge();
}
