#ifndef KYCATEGORYWIDGET_H
#define KYCATEGORYWIDGET_H

#include "kyexport.h"
#include <QList>
#include <QString>
#include <QWidget>

class KyCategoryEdit;

/** A KyCategoryEdit with a layout around it, which fills its parent's. */
class KY_EXPORT KyCategoryWidget : public QWidget
{
    Q_OBJECT
public:
    /** With no category checked, and empty names. */
    explicit KyCategoryWidget(QWidget *parent = nullptr, const char *name = nullptr);
    /** As with setCategories(). */
    KyCategoryWidget(const QList<int> &ids, const QString &appName, QWidget *parent = nullptr,
                     const char *name = nullptr);
    /** As with setCategories(). */
    KyCategoryWidget(const QList<int> &ids, const QString &appName, const QString &visibleName,
                     QWidget *parent = nullptr, const char *name = nullptr);

    /** See KyCategoryEdit::setCategories(); the application's name is the visible one, too. */
    void setCategories(const QList<int> &ids, const QString &appName);
    /** See KyCategoryEdit::setCategories(). */
    void setCategories(const QList<int> &ids, const QString &appName, const QString &visibleName);
    /** See KyCategoryEdit::newCategories(). */
    QList<int> newCategories();

public slots:
    /** See KyCategoryEdit::kludge(). */
    void kludge();

private:
    Q_DISABLE_COPY_MOVE(KyCategoryWidget)

    KyCategoryEdit *edit;
};

#endif
