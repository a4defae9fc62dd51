#include "devcommands.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/startup.h"
#include "engine/picturecache.h"
#include "engine/player.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "thumbnails/frmThumbNail.h"
#include "viewer/frmMainViewer.h"

#include <QAccessible>
#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QEventLoop>
#include <QStyleFactory>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace {

constexpr int paintedWithin = 20000; // milliseconds
constexpr int lookInterval = 20; // milliseconds between two looks at the player

/// The windows that a command brought up; they go when it ends, without the questions and savings of a normal end.
class ShownWindow
{
public:
    explicit ShownWindow(const FormRow &row)
        : m_window(row.make())
    {
    }
    ~ShownWindow()
    {
        globals.ProgramExiting = true;
        for (const FormRow &row : formTable()) {
            if (row.isLoaded && row.isLoaded())
                row.unload();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        PictureCache::instance().shutDown();
    }
    ShownWindow(const ShownWindow &) = delete;
    ShownWindow &operator=(const ShownWindow &) = delete;
    QWidget *get() const { return m_window; }

private:
    QWidget *m_window;
};

const FormRow *rowOf(const QString &name)
{
    for (const FormRow &row : formTable()) {
        if (name == QLatin1String(row.name) && row.make)
            return &row;
    }
    return nullptr;
}

QString noSuchWindow(const QString &name)
{
    QStringList names;
    for (const FormRow &row : formTable()) {
        if (row.make)
            names << QString::fromLatin1(row.name);
    }
    return QStringLiteral("there is no window %1; there are %2").arg(name, names.join(QLatin1Char(' ')));
}

void letEventsIn()
{
    for (int round = 0; round < 5; ++round) {
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        QCoreApplication::sendPostedEvents();
    }
}

/// Puts files into the Main Viewer's list and waits until the first stands painted. False when it does not in time.
bool openFiles(frmMainViewer &viewer, const QStringList &files)
{
    const bool motion = GetMediaKind(files.constFirst()) == kindMotion;
    if (motion && playerIsPresent())
        globals.MediaPlayerVersion = 9.0F;
    QEventLoop loop;
    bool painted = false;
    QObject::connect(&viewer, &frmMainViewer::itemPainted, &loop, [&] {
        painted = true;
        loop.quit();
    });
    viewer.addDroppedFiles(files);
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        painted = viewer.wmp9->isReady();
        if (painted)
            loop.quit();
    });
    if (motion)
        look.start(lookInterval);
    if (!painted) {
        QTimer::singleShot(paintedWithin, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return painted;
}

/// The Thumbnail Viewer shows the Main Viewer's list, which nobody sees here.
void showThumbnails(frmThumbNail &window, const QStringList &files)
{
    form<frmMainViewer>().addDroppedFiles(files);
    window.mnuViewerRefresh_Click();
    letEventsIn();
}

/// Shows the window with its files. Gives 0, or the exit status of what failed.
int bringUp(QWidget *window, const QStringList &files, QSize size)
{
    if (!window->isVisible())
        window->show();
    if (!size.isEmpty())
        window->resize(size);
    letEventsIn();
    if (files.isEmpty())
        return 0;
    auto *viewer = qobject_cast<frmMainViewer *>(window);
    auto *thumbnails = qobject_cast<frmThumbNail *>(window);
    if (!viewer && !thumbnails)
        return dev::wrongCall(QStringLiteral("only frmMainViewer and frmThumbNail open files"));
    QStringList paths;
    for (const QString &file : files)
        paths << absolutePath(file, QDir::currentPath());
    if (thumbnails) {
        showThumbnails(*thumbnails, paths);
        return 0;
    }
    if (!openFiles(*viewer, paths))
        return dev::fail(files.constFirst() + QStringLiteral(": not shown within 20 seconds"));
    letEventsIn();
    return 0;
}

void makeDark()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette(QColor(53, 56, 60));
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    palette.setColor(QPalette::Highlight, QColor(61, 122, 184));
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        palette.setColor(QPalette::Disabled, role, QColor(140, 143, 148));
    QApplication::setPalette(palette);
}

int saveGrab(QWidget *window, const QString &path)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!window->grab().toImage().save(&buffer, "PNG"))
        return dev::fail(QStringLiteral("the window could not be drawn"));
    const Result<void> written = writeFileAtomically(path, bytes);
    return written ? 0 : dev::fail(path + QStringLiteral(": ") + written.reason());
}

QString textOf(const QWidget *widget)
{
    for (const char *property : {"text", "title", "windowTitle", "currentText", "plainText", "value"}) {
        const QVariant value = widget->property(property);
        if (value.isValid() && !value.toString().isEmpty())
            return value.toString();
    }
    return {};
}

QString accessibleName(QWidget *widget)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
    return interface ? interface->text(QAccessible::Name) : QString();
}

QStringList widgetCells(QWidget *widget)
{
    const QRect place = widget->geometry();
    return {widget->objectName(), QString::fromLatin1(widget->metaObject()->className()), textOf(widget),
        accessibleName(widget), widget->isEnabled() ? QStringLiteral("enabled") : QStringLiteral("disabled"),
        widget->isVisible() ? QStringLiteral("visible") : QStringLiteral("hidden"),
        QStringLiteral("%1,%2 %3x%4").arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height())};
}

QStringList actionCells(const QAction *action)
{
    return {action->objectName(), QString::fromLatin1(action->metaObject()->className()), action->text(),
        action->text(), action->isEnabled() ? QStringLiteral("enabled") : QStringLiteral("disabled"),
        action->isVisible() ? QStringLiteral("visible") : QStringLiteral("hidden"), action->shortcut().toString()};
}

bool isOwnName(const QObject *object)
{
    return !object->objectName().isEmpty() && !object->objectName().startsWith(QLatin1String("qt_"));
}

}

int dev::shot(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption dark(QStringLiteral("dark"));
    const QCommandLineOption size(QStringLiteral("size"), {}, QStringLiteral("size"));
    parser.addOptions({dark, size});
    if (!parse(parser, arguments, 2, -1))
        return 2;
    const QStringList words = parser.positionalArguments();
    const QSize wanted = sizeOf(parser.value(size));
    if (parser.isSet(size) && wanted.isEmpty())
        return wrongCall(QStringLiteral("--size takes WIDTHxHEIGHT"));
    const FormRow *row = rowOf(words.at(0));
    if (!row)
        return wrongCall(noSuchWindow(words.at(0)));
    if (parser.isSet(dark))
        makeDark();
    const ShownWindow window(*row);
    const int status = bringUp(window.get(), words.mid(2), wanted);
    return status ? status : saveGrab(window.get(), words.at(1));
}

int dev::controls(const QStringList &arguments)
{
    QCommandLineParser parser;
    if (!parse(parser, arguments, 1, -1))
        return 2;
    const QStringList words = parser.positionalArguments();
    const FormRow *row = rowOf(words.at(0));
    if (!row)
        return wrongCall(noSuchWindow(words.at(0)));
    const ShownWindow window(*row);
    const int status = bringUp(window.get(), words.mid(1), {});
    if (status)
        return status;
    QList<QStringList> rows;
    for (QWidget *widget : window.get()->findChildren<QWidget *>()) {
        if (isOwnName(widget))
            rows << widgetCells(widget);
    }
    for (const QAction *action : window.get()->findChildren<QAction *>()) {
        if (isOwnName(action))
            rows << actionCells(action);
    }
    std::stable_sort(rows.begin(), rows.end(),
        [](const QStringList &a, const QStringList &b) { return nameLess(a.constFirst(), b.constFirst()); });
    for (const QStringList &cells : std::as_const(rows))
        printRow(cells);
    return 0;
}
