#ifndef KYZIPCONVERTOR_H
#define KYZIPCONVERTOR_H

#include "kyexport.h"
#include <memory>
#include <QDialog>

class KyZIPPrivate;
class QListWidgetItem;
class QPushButton;
struct KYAddressItem;

/**
 * The dialog that turns a postal code into an address, or an address into a postal code.
 *
 *     KyZIPConvertor dialog(this);
 *     dialog.setSearchMode(KyZIPConvertor::ZipSearch);
 *     dialog.setZip(zipField->text());
 *     if (dialog.convertor() == QDialog::Accepted && dialog.isSelectAddress())
 *         cityField->setText(dialog.selectedCity());
 *
 * The user sees a list of matches, goes to neighbouring codes with the keys left and right, and takes the
 * code, the address or both; to tap a row takes both. What was taken stays so in the same dialog until a
 * button is pressed: make one for each use.
 */
class KY_EXPORT KyZIPConvertor : public QDialog
{
    Q_OBJECT

public:
    enum SearchMode {
        ZipSearch = 0,    ///< from a code to addresses
        AddressSearch = 1 ///< from an address to codes
    };

    /**
     * Opens the dictionary, and keeps it open as long as it lives.
     * @param parent may be null
     * @param warn tells the user when there is no dictionary
     * @param name the objectName(); may be null
     */
    explicit KyZIPConvertor(QWidget *parent = nullptr, bool warn = true, const char *name = nullptr,
                            bool modal = true);
    ~KyZIPConvertor() override;

    /** True when there is a dictionary. */
    [[nodiscard]] bool isExecute() const;
    /** Searches, and lets the user choose. @return QDialog::Accepted; 0 when the user took nothing, when
     * nothing was found, of which the user is told, and when there is no dictionary */
    int convertor();

    /** ZipSearch at first. */
    void setSearchMode(KyZIPConvertor::SearchMode mode);
    /** The code of ZipSearch, in digits of either width, with or without a hyphen. */
    void setZip(const QString &zip);
    /** The address of AddressSearch. Half-width characters count as full-width ones, and blanks not at all.
     */
    void setAddress(const QString &address);
    /** Whether the prefecture is taken with the address: the check box, which the user may change. Off at
     * first. */
    void setStateAdoption(bool adopt);

    /** @return the code with its hyphen; null when the user didn't take it */
    [[nodiscard]] QString selectedZip() const;
    /** @return the address behind the prefecture; null when the user didn't take it */
    [[nodiscard]] QString selectedCity() const;
    /** @return the prefecture; null when the user didn't take it */
    [[nodiscard]] QString selectedState() const;
    /** True when the user took the code. */
    [[nodiscard]] bool isSelectZip() const;
    /** True when the user took the address. */
    [[nodiscard]] bool isSelectAddress() const;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private slots:
    void slotAdrClicked();
    void slotZipClicked();
    void slotAdrZipClicked();
    void slotClicked(QListWidgetItem *item);
    void slotSelectChanged();

private:
    Q_DISABLE_COPY_MOVE(KyZIPConvertor)
    void init(bool warn);
    void buildWidgets();
    void buildListBox();
    [[nodiscard]] QPushButton *pushButton(QString text, void (KyZIPConvertor::*slot)());
    [[nodiscard]] bool settingData();
    [[nodiscard]] bool searchZip();
    [[nodiscard]] bool searchAddress();
    void settingAdrsList(const QList<KYAddressItem> &items, bool repaintNow);
    [[nodiscard]] bool mayLeaveAddress();
    void showNeighbour(int mode);
    [[nodiscard]] const KYAddressItem *takenItem() const;
    void warnOfFailure(const QString &text);

    const std::unique_ptr<KyZIPPrivate> d;
};

#endif
