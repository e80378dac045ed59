#ifndef SETTINGSPAGE_H
#define SETTINGSPAGE_H

#include "devicevalues.h"
#include "preferences.h"

#include <QScrollArea>

class KyColorSelectorPopup;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QMenu;
class QToolButton;
class QVBoxLayout;
class VolumesView;

/** What the device is and how it is, kept current while it is to be seen, and what the user can choose. A
 * choice takes effect at once and is kept. */
class SettingsPage : public QScrollArea
{
    Q_OBJECT
public:
    explicit SettingsPage(QWidget *parent = nullptr);

    /** What it shows, a line a value: "Model: ...". */
    [[nodiscard]] QStringList summary() const;

private:
    /** A shown value and where it comes from. */
    struct Shown
    {
        DeviceValue value;
        QLabel *label;
    };

    QFormLayout *addSection(const QString &title);
    void addValues(QFormLayout *form, const QList<DeviceValue> &values);
    void addDevice();
    void addPower();
    void addStorage();
    void addAppearance();
    void addInputMethod();
    void addLog();
    [[nodiscard]] QWidget *makeLanguages();
    [[nodiscard]] QWidget *makeFontSizes();
    [[nodiscard]] QWidget *makeColours();
    void makeColourMenu();
    void chooseColour(const QColor &colour);

    void refresh();
    void refreshInputMethod();
    void refreshLog();
    void showColour();
    void keep(const Preferences &preferences);
    void keepLanguage(const QString &code);
    void tell(const QString &objection);

    Preferences m_preferences;
    QVBoxLayout *m_sections;
    QList<Shown> m_values;
    QLabel *m_powerIcon = nullptr;
    QString m_shownIcon;
    VolumesView *m_volumes = nullptr;
    QComboBox *m_languages = nullptr;
    QMenu *m_fontMenu = nullptr;
    QToolButton *m_colour = nullptr;
    KyColorSelectorPopup *m_colours = nullptr;
    QComboBox *m_methods = nullptr;
    QCheckBox *m_fepOn = nullptr;
    QComboBox *m_logTargets = nullptr;
    QLabel *m_logFile = nullptr;
};

#endif
