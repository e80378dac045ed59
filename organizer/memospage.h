#ifndef MEMOSPAGE_H
#define MEMOSPAGE_H

#include "cardspage.h"

/** The memos, by title at first. */
class MemosPage : public CardsPage
{
    Q_OBJECT
public:
    explicit MemosPage(CategoryTable *table, QWidget *parent = nullptr);

protected:
    [[nodiscard]] CardDetails detailsOf(unsigned long card) const override;

private:
    [[nodiscard]] QString titleOf(unsigned long card) const;
    [[nodiscard]] QString changeOf(unsigned long card) const;
};

#endif
