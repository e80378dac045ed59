#ifndef KYMISC_H
#define KYMISC_H

#include "kyexport.h"
#include <QList>
#include <QMessageBox>
#include <QSize>
#include <QString>
#include <QStringList>

class Config;
class QKeyEvent;
class QMenu;
class QRegularExpression;

/**
 * What applications need of the system around them: memory and storage, file names, the power manager, the
 * file server, processes; and the measures of the screen, with fonts and column widths that follow from them.
 * Files of the device are read where devicePath() says that they lie. Nothing is kept between calls.
 */
class KY_EXPORT KyMisc
{
public:
    KyMisc() = delete;

    /** @name Language @{ */

    /** The two-letter code of the device's language: the key "Language" of the settings file "locale", else
     * the environment variable LANG; "en" when that is not exactly two characters long. */
    [[nodiscard]] static QString getLanguage();

    /** @} @name Memory and storage @{ */

    /** Free memory in kilobytes, less 2048 that are always kept back; 0 when there is no more, or when
     * /proc/meminfo can't be read. Buffers count twice. */
    [[nodiscard]] static int availableMemory();
    /** Free internal storage in kilobytes; 0x7fffffff when that is not known. */
    [[nodiscard]] static int availableInternalStorage();

    /** What a temporary file is for. It makes no difference. */
    enum RequiredSize { SmallSize = 0, LargeSize = 1 };
    /** Folder of temporary files, "/tmp". */
    [[nodiscard]] static const char *getTmpPath(KyMisc::RequiredSize size);
    /** The same. @param size needed, in bytes */
    [[nodiscard]] static const char *getTmpPath(unsigned long size);
    /** Folder of what comes in over infrared. It is not made. */
    [[nodiscard]] static QString getObexTmpPath();

    /** @} @name File names @{ */

    /** True when a base name has a character that the device's volumes don't take: . * / | ' ? ; : " < > \,
     * the yen sign or a tab. */
    [[nodiscard]] static bool invalidFileName(const QString &name);
    /** A copy with "_" in place of each of those characters. */
    [[nodiscard]] static QString getValidFileName(const QString &name);
    /** The path without links in its folders; a link at its end is followed once. */
    [[nodiscard]] static QString getCanonicalPath(const QString &path);
    /** False when the name is taken; true in every other case, that of a full disk or a missing folder too.
     * Leaves nothing behind. */
    [[nodiscard]] static bool canCreateTheFile(const QString &path);
    /** The volume of a path as the battery checks name it: "CF" or "SD" for what begins like the path of a
     * card, with or without the device root, else "Int.". */
    [[nodiscard]] static QString moduleNameFromPath(const QString &path);

    /** @} @name Power and state of the application @{ */

    /** Lets the device switch itself off, or not, while nobody uses it. */
    static void enableAutoPowerOff(bool enable);
    /** The same. @param allowScreenOff with @p enable false, the screen alone may go dark
     * @param disableSaver with @p enable false, the screen saver is held off too */
    static void enableAutoPowerOff(bool enable, bool allowScreenOff, bool disableSaver);
    /** Tells the task bar that the user may not leave this application for another, or may again. */
    static void enableLockApplication(bool lock);

    /**
     * True when work that needs much power must be refused, as the battery is very low or critical; the user
     * is told so.
     * @param module "USB", "CF", "SD", "IR", or another name
     * @param force refuse at any state of the battery
     */
    [[nodiscard]] static bool checkBatteryError(const QString &module, bool force);
    /** The same, and nothing is shown. */
    [[nodiscard]] static bool checkBatteryErrorWithoutDialog(const QString &module, bool force);

    /** @} @name Boxes of records @{ */

    /** Asks every application to let go of a box; of all with an empty path. */
    static void requestCloseFile(const QString &path);
    /** Tells every application that the box is free again; ends a request for all with an empty path. */
    static void requestOpenFile(const QString &path);

    /** @} @name The file server @{ */

    /** True when a client has the file open for writing. @param lockFile of the server for a shared file */
    [[nodiscard]] static bool isTheSmbShareFileHasWriteEntry(const QString &lockFile);
    /** True when a client is writing a copy of the file. */
    [[nodiscard]] static bool isTheSmbShareFileNowCopy(const QString &lockFile);
    /**
     * Looks at the share modes in a lock file of the server: true when for some entry the mode's low byte,
     * cut down to the bits of @p mask, is @p value (@p equal true) or isn't (@p equal false). False when the
     * file can't be read or has no entry.
     *
     * The file is little-endian: 32 bits unused, 32 bits number of entries, 16 bits length of a name, the
     * name; then for each entry five times 32 bits, the third of which is the share mode.
     */
    [[nodiscard]] static bool checkTheSmbShareFileMode(const QString &lockFile, char mask, char value,
                                                       bool equal);
    /** True when a client of the server has the file open for writing, and when the file isn't there. */
    [[nodiscard]] static bool isTheFileLockedBySmbd(const QString &path);
    /** True when the server runs. */
    [[nodiscard]] static bool isSambaForked();
    static void stopSamba();
    static void startSamba();

    /** @} @name Processes and diagnostics @{ */

    enum ListType {
        ListPid = 0,       ///< the process number
        ListCmdline = 1,   ///< the command line
        ListPidCmdline = 2 ///< the process number, a blank, the command line
    };
    /**
     * The processes whose command line, with blanks between the arguments, matches somewhere.
     * @param maxCount ends the walk after so many; 0 for no limit
     */
    [[nodiscard]] static QStringList procList(const QRegularExpression &expression, unsigned int maxCount,
                                              KyMisc::ListType type);
    /** Writes the memory sizes of this process as a debug line. @param withMallocStats those of the allocator
     * too, to standard error */
    static void dumpMemInfo(bool withMallocStats);

    /** @} @name Messages and keys @{ */

    /**
     * Shows a modal message box for a time, and returns when that is over. Events are handled meanwhile.
     * @param timeout in tenths of a second; the box stands at least that long
     * @param button0 first button, as QMessageBox::StandardButton or 1 OK, 2 Cancel, 3 Yes, 4 No, 5 Abort,
     *                6 Retry, 7 Ignore, 8 Yes to All, 9 No to All, with 0x100 added for the default button
     *                and 0x200 for that of the escape key; 0 for none
     * @param parent may be null
     * @param name becomes the objectName() of the box; may be null
     * @param flags Qt::WindowFlags
     */
    static void temporaryMessageBox(const QString &caption, const QString &text, int timeout,
                                    QMessageBox::Icon icon, int button0, int button1, int button2,
                                    QWidget *parent, const char *name, unsigned int flags);
    /** Number of the application's command that a key stands for: with Ctrl C 51, M 2, N 1, V 52, X 50; the
     * delete key 3, the device's keys 8207 and 8208 5 and 4. @return 0 for none */
    [[nodiscard]] static int appCommandFromKey(const QKeyEvent &event);

    /** @} @name The screen @{ */

    /** Resolution of the screen in dots an inch, qt_currentDpi(). */
    [[nodiscard]] static int getDpi();
    /** What all fixed sizes in pixels are multiplied by: the resolution / 72, rounded down. */
    [[nodiscard]] static int getResolutionScale();
    /** Size that a maximised window gets, without what the window system puts around it. */
    [[nodiscard]] static QSize getMaximizedWidgetInfo();
    /** Width of a vertical and height of a horizontal scroll bar; (0,0) without an application object. */
    [[nodiscard]] static QSize getScrollbarMetrics();
    /** Width in a maximised window beside a scroll bar. */
    [[nodiscard]] static int getMaximizedWidgetContentsWidth();
    /** True when the desktop is wider than high. */
    [[nodiscard]] static bool isLandscape();
    /** 2, the stylus, on a desktop of 480 pixels' width; else 1, the keyboard. */
    [[nodiscard]] static int defaultInputDevice();
    /** Name of the picture behind the windows. */
    [[nodiscard]] static QString defaultWallPaper();

    /** @}
     * @name Font sizes
     * A logical size is 0 for the middle, below it smaller, above it larger: -1 to 1 at scale 1, -2 to 2 at
     * scale 2 and more. The item of a menu carries its number as QAction::data(): 1 for the smallest.
     * @{ */

    /** Adds the named sizes, the largest first. */
    static void insertStandardFontMenu(QMenu *menu);
    /** Adds all sizes of the application's font, each with a tenth of the size as its number. */
    static void insertAllFontMenu(QMenu *menu);
    /** @return 0 for an unknown number */
    [[nodiscard]] static int getLogicalSizeFromMenuId(int id);
    /** Of the items of insertStandardFontMenu(), checks that of a logical size and unchecks the others. A
     * size beyond the range counts as its nearest end. */
    static void setFontSizeItemChecked(QMenu *menu, int logicalSize);
    /** In points. A size beyond the range counts as its nearest end. */
    [[nodiscard]] static int getFontPointSize(int logicalSize);
    /** Goes one logical size up or down, unless the range ends there, and checks its item. */
    static void toggleFontSize(QMenu *menu, int &logicalSize, bool larger);
    /** Goes one size of insertAllFontMenu() up or down, unless the list ends there, and checks its item. A
     * size that isn't in the list stays as it is. */
    static void toggleAllFontSize(QMenu *menu, int *pointSize, bool larger);

    /** @}
     * @name Columns of lists
     * For a QTreeWidget, or a widget that is a KyColumnList; others are left alone, with a debug line.
     * Columns that the widget hasn't are passed over; a width set lies between 0 and 32767 pixels. The widths
     * that a user has set are kept in the current group of a Config, in units of the scale, one key a column
     * and orientation: "pcolw0_w" is the first column in landscape, "pcolw0_h" in portrait.
     * @{ */

    /** How the width of a column is found. */
    enum ColumnType {
        ColumnScaled = 0,  ///< value * scale
        ColumnText = 1,    ///< width of the text in the widget's font + 8 * scale
        ColumnStretch = 2, ///< a share of what the others leave, with value as its weight
        ColumnPixels = 3   ///< value
    };
    struct KyListColumnInfo
    {
        int type = ColumnScaled;
        QString text;
        int value = 0;
    };

    /** Sets the widths of all columns. @param config null when nothing is kept; what is kept there above 0
     * wins over every rule */
    static void setListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                    Config *config);
    static void setListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                    Config &config);
    /** Keeps the present widths. @param columns when empty, all columns of the widget
     * @param landscape the orientation that they are kept for; the present one without it */
    static void writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                      bool landscape, Config *config);
    static void writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                      Config *config);
    static void writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                      Config &config, bool landscape);
    static void writeListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                      Config &config);
    /** Called when the screen has turned: keeps the widths for the orientation that has ended, and sets those
     * of the new one. */
    static void rotateListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                       Config *config);
    static void rotateListColumnsWidth(QWidget *widget, const QList<KyMisc::KyListColumnInfo> &columns,
                                       Config &config);

    /** @} @name Layout @{ */

    /** Brings a form that was drawn with the font "lcfont" to the sizes of its larger form: see
     * fontArrange().
     */
    static void KyFontArrange(QWidget *widget);
    /** Multiplies margins and spacings by the scale: see scaleArrange(). */
    static void KyLayoutSpaceArrange(QObject *object);

    /** @} */
};

/** Gives each list, line edit, text edit and spin box below an object, itself included, that has a font of
 * @p fromPoint points the size @p toPoint. What lies inside a combo box stays as it is. */
KY_EXPORT void fontArrange(QObject *object, int fromPoint, int toPoint);

/** Multiplies margin and spacing of each layout below an object by a factor; layouts inside layouts stay as
 * they are. Done once, when a form has been built: a second time multiplies again. A negative
 * factor counts as 0. */
KY_EXPORT void scaleArrange(QObject *object, long factor);

#endif
