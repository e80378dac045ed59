#include "settingspage.h"

#include "config.h"
#include "fepinterface.h"
#include "jpnfep.h"
#include "kycolorselectorpopup.h"
#include "kymisc.h"
#include "kypowerstatusmanager.h"
#include "messages.h"
#include "powerstate.h"
#include "qpeapplication.h"
#include "refreshtimer.h"
#include "resource.h"
#include "volumesview.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

/* A language that the device can be set to; the code "" stands for that of the environment. */
struct Language
{
    const char *code;
    const char *name; // in itself
};
constexpr Language Languages[] = {{"en", "English"}, {"ja", "日本語"}};

const QString LocaleFile = QStringLiteral("locale");
const QString LanguageKey = QStringLiteral("Language");

constexpr const char *InputMethods[] = {"AutoPad", "Keyboard", "JpnNumPad", "CRIM"};
constexpr int PlainMode = 0x48; // of the keyboard

QLabel *makeValueLabel()
{
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

/* May be narrower than its widest item, so that the page fits a small screen. */
QComboBox *makeChoice()
{
    auto *box = new QComboBox;
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(8);
    return box;
}

QToolButton *makeMenuButton(QMenu *menu)
{
    auto *button = new QToolButton;
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

SettingsPage::SettingsPage(QWidget *parent)
    : QScrollArea(parent), m_preferences(Preferences::load()), m_sections(nullptr)
{
    auto *contents = new QWidget;
    m_sections = new QVBoxLayout(contents);
    addDevice();
    addPower();
    addStorage();
    addAppearance();
    addInputMethod();
    addLog();
    m_sections->addStretch();
    setWidget(contents);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    connect(new RefreshTimer(this), &RefreshTimer::due, this, &SettingsPage::refresh);
    refresh();
}

QFormLayout *SettingsPage::addSection(const QString &title)
{
    auto *box = new QGroupBox(title);
    auto *form = new QFormLayout(box);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_sections->addWidget(box);
    return form;
}

void SettingsPage::addValues(QFormLayout *form, const QList<DeviceValue> &values)
{
    for (const DeviceValue &value : values) {
        QLabel *label = makeValueLabel();
        form->addRow(DeviceValues::nameOf(value), label);
        m_values.append({value, label});
    }
}

void SettingsPage::addDevice()
{
    QFormLayout *form = addSection(tr("Device"));
    addValues(form, DeviceValues::identity());
    addValues(form, DeviceValues::screen());
}

void SettingsPage::addPower()
{
    QFormLayout *form = addSection(tr("Power"));
    m_powerIcon = new QLabel;
    m_powerIcon->setObjectName(QStringLiteral("powerIcon"));
    form->addRow(m_powerIcon);
    addValues(form, DeviceValues::power());
}

void SettingsPage::addStorage()
{
    QFormLayout *form = addSection(tr("Memory and storage"));
    addValues(form, DeviceValues::memory());
    m_volumes = new VolumesView;
    form->addRow(m_volumes);
}

void SettingsPage::addAppearance()
{
    QFormLayout *form = addSection(tr("Language and appearance"));
    form->addRow(tr("Language"), makeLanguages());
    form->addRow(tr("Font size"), makeFontSizes());
    form->addRow(tr("Colour of the selection"), makeColours());
}

QWidget *SettingsPage::makeLanguages()
{
    m_languages = makeChoice();
    m_languages->setObjectName(QStringLiteral("language"));
    for (const Language &language : Languages)
        m_languages->addItem(QString::fromUtf8(language.name), QString::fromLatin1(language.code));
    const QString present = KyMisc::getLanguage();
    if (m_languages->findData(present) < 0)
        m_languages->addItem(present, present);
    m_languages->setCurrentIndex(m_languages->findData(present));
    connect(m_languages, &QComboBox::activated, this,
            [this] { keepLanguage(m_languages->currentData().toString()); });
    return m_languages;
}

QWidget *SettingsPage::makeFontSizes()
{
    m_fontMenu = new QMenu(this);
    KyMisc::insertStandardFontMenu(m_fontMenu);
    KyMisc::setFontSizeItemChecked(m_fontMenu, m_preferences.fontSize);
    QToolButton *button = makeMenuButton(m_fontMenu);
    button->setObjectName(QStringLiteral("fontSize"));
    const auto showSize = [this, button] {
        button->setText(tr("%1 points").arg(KyMisc::getFontPointSize(m_preferences.fontSize)));
    };
    showSize();
    connect(m_fontMenu, &QMenu::triggered, this, [this, showSize](const QAction *action) {
        Preferences changed = m_preferences;
        changed.fontSize = KyMisc::getLogicalSizeFromMenuId(action->data().toInt());
        keep(changed);
        KyMisc::setFontSizeItemChecked(m_fontMenu, changed.fontSize);
        showSize();
    });
    return button;
}

QWidget *SettingsPage::makeColours()
{
    m_colour = makeMenuButton(nullptr);
    m_colour->setObjectName(QStringLiteral("colour"));
    m_colour->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    makeColourMenu();
    showColour();
    return m_colour;
}

/* A menu for each use: one that is kept remembers what was chosen in it last, and to choose that again, with
 * another choice between, would only close it. */
void SettingsPage::makeColourMenu()
{
    if (m_colours)
        m_colours->deleteLater();
    m_colours = new KyColorSelectorPopup(true, this, "colours", 0);
    if (m_preferences.highlight.isValid())
        m_colours->setCurrentColor(m_preferences.highlight.rgb());
    else
        m_colours->setCurrentColorTransparent();
    connect(m_colours, &KyColorSelectorPopup::selected, this, [this](QRgb colour) { chooseColour(colour); });
    connect(m_colours, &KyColorSelectorPopup::transparentSelected, this, [this] { chooseColour({}); });
    connect(m_colours, &QMenu::aboutToHide, this, &SettingsPage::makeColourMenu, Qt::QueuedConnection);
    m_colour->setMenu(m_colours);
}

void SettingsPage::chooseColour(const QColor &colour)
{
    Preferences changed = m_preferences;
    changed.highlight = colour;
    keep(changed);
    showColour();
}

void SettingsPage::showColour()
{
    QPixmap pixmap(m_colour->iconSize());
    pixmap.fill(QApplication::palette().color(QPalette::Highlight));
    m_colour->setIcon(pixmap);
    m_colour->setText(m_preferences.highlight.isValid() ? m_preferences.highlight.name()
                                                        : tr("the desktop's"));
}

void SettingsPage::addInputMethod()
{
    QFormLayout *form = addSection(tr("Input method"));
    addValues(form, DeviceValues::inputMethod());
    m_methods = makeChoice();
    m_methods->setObjectName(QStringLiteral("inputMethod"));
    for (const char *method : InputMethods)
        m_methods->addItem(QString::fromLatin1(method));
    connect(m_methods, &QComboBox::textActivated, this,
            [](const QString &method) { JpnFep::changeInputMethod(method); });
    m_fepOn = new QCheckBox(tr("Front-end processor on"));
    m_fepOn->setObjectName(QStringLiteral("fepOn"));
    connect(m_fepOn, &QCheckBox::clicked, this, [](bool on) { JpnFep::setInputMode(PlainMode, on); });
    form->addRow(tr("Change to"), m_methods);
    form->addRow(m_fepOn);
}

void SettingsPage::addLog()
{
    QFormLayout *form = addSection(tr("Log"));
    m_logTargets = makeChoice();
    m_logTargets->setObjectName(QStringLiteral("log"));
    m_logTargets->addItem(tr("To where it was started"), Preferences::LogToTerminal);
    m_logTargets->addItem(tr("To files, ten in turn"), Preferences::LogToFile);
    m_logTargets->addItem(tr("Nothing"), Preferences::NoLog);
    m_logTargets->setCurrentIndex(m_logTargets->findData(m_preferences.log));
    connect(m_logTargets, &QComboBox::activated, this, [this] {
        Preferences changed = m_preferences;
        changed.log = Preferences::LogTarget(m_logTargets->currentData().toInt());
        keep(changed);
        refreshLog();
    });
    m_logFile = makeValueLabel();
    form->addRow(tr("Diagnostic lines"), m_logTargets);
    form->addRow(tr("File"), m_logFile);
}

void SettingsPage::refresh()
{
    for (const Shown &shown : std::as_const(m_values))
        shown.label->setText(shown.value.read());
    const QString icon = PowerState::icon(KyPowerStatusManager::readStatus());
    if (icon != m_shownIcon)
        m_powerIcon->setPixmap(Resource::loadPixmapDpi(icon, 2 * KyMisc::getDpi()));
    m_shownIcon = icon;
    m_volumes->refresh();
    refreshInputMethod();
    refreshLog();
}

void SettingsPage::refreshInputMethod()
{
    const FepInterface *fep = QPEApplication::qwsGetFepIF();
    m_methods->setEnabled(fep);
    m_fepOn->setEnabled(fep && (fep->isOn() || fep->canSwitchOn()));
    m_fepOn->setChecked(fep && fep->isOn());
}

void SettingsPage::refreshLog()
{
    const QString file = Preferences::logFile();
    m_logFile->setText(file.isEmpty() ? tr("none") : file);
}

void SettingsPage::keep(const Preferences &preferences)
{
    if (preferences == m_preferences)
        return;
    m_preferences = preferences;
    m_preferences.apply();
    if (!m_preferences.save())
        tell(tr("The settings could not be saved. They hold until the Organizer ends."));
}

/* The store takes its language once, when the first box is opened. */
void SettingsPage::keepLanguage(const QString &code)
{
    if (code == KyMisc::getLanguage())
        return;
    Config config(LocaleFile);
    config.writeEntry(LanguageKey, code);
    if (config.write())
        Messages::inform(this, tr("Language"),
                         tr("The language changes when the Organizer is started again."));
    else
        tell(tr("The language could not be saved."));
}

void SettingsPage::tell(const QString &objection)
{
    Messages::warn(this, tr("Settings"), objection);
}

QStringList SettingsPage::summary() const
{
    QStringList lines;
    for (const Shown &shown : m_values)
        lines.append(DeviceValues::nameOf(shown.value) + QStringLiteral(": ") + shown.label->text());
    return lines + m_volumes->summary();
}
