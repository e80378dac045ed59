#ifndef KYZIPCONVERTOR_P_H
#define KYZIPCONVERTOR_P_H

#include "kyaddresslistbox.h"
#include "kyzipconvertor.h"
#include "ydic.h"

class QCheckBox;
class QLabel;

/** What the user takes: the values of KyZIPPrivate::selectType. */
enum { TakeZip = 0, TakeAddress = 1, TakeBoth = 2 };

class KyZIPPrivate
{
public:
    KyZIPConvertor::SearchMode searchMode = KyZIPConvertor::ZipSearch;
    ydic_info *info = nullptr; ///< null without a dictionary
    QString zip;
    QString address;
    bool multiCode = false; ///< the list is that of an address that fits several codes
    int selectType = TakeBoth;
    // Null without a dictionary.
    KyAddressListBox *listBox = nullptr;
    QLabel *zipLabel = nullptr;
    QCheckBox *stateBox = nullptr;
};

#endif
