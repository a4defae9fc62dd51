#include "app/colorschemes.h"
#include "ui/background.h"

#include <QtTest>
#include <QtWidgets>

namespace {

/// A window with texts at all heights, one of them on a page with a ground of its own.
class Window : public QWidget
{
public:
    Window()
    {
        resize(300, 400);
        for (int y = 0; y + 20 <= 400; y += 20) {
            auto *label = new QLabel(QStringLiteral("On the gradient"), this);
            label->setGeometry(10, y, 150, 20);
            labels.append(label);
        }
        group->setGeometry(170, 100, 100, 200);
        box->setGeometry(10, 20, 80, 20);
    }
    QVector<QLabel *> labels;
    QGroupBox *group = new QGroupBox(QStringLiteral("Group"), this);
    QCheckBox *box = new QCheckBox(QStringLiteral("Box"), group);
    QTabWidget *tabs = new QTabWidget(this);
    QLabel *inside = new QLabel(QStringLiteral("On a page"), tabs);
};

QRgb textColor(const QWidget *widget)
{
    return widget->palette().color(QPalette::WindowText).rgb();
}

double leastContrast(const QImage &image, int top, int bottom, QRgb text)
{
    double least = 21;
    for (int y = top; y < bottom; ++y)
        least = std::min(least, contrast(image.pixel(image.width() - 1, y), text));
    return least;
}

constexpr const char *allSchemes[] = {"RED", "BACKRED", "BLUE", "BACKBLUE", "GREEN", "BACKGREEN", "YELLOW",
    "BACKYELLOW", "CYAN", "BACKCYAN", "MAGENTA", "BACKMAGENTA", "GRAY", "BACKGRAY", "OTHER"};
}

class tst_background : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QApplication::setPalette(QPalette()); }
    void textsCanBeReadOnEveryScheme_data();
    void textsCanBeReadOnEveryScheme();
    void linesAreThoseOfTheBands();
    void aPartPaintedAloneIsTheSame();
    void otherEndsHalfWay();
    void anUnknownNamePaintsNothing();
};

void tst_background::textsCanBeReadOnEveryScheme_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QString>("scheme");
    for (const char *scheme : allSchemes) {
        QTest::addRow("%s, light palette", scheme) << QColor(240, 240, 240) << QString::fromLatin1(scheme);
        QTest::addRow("%s, dark palette", scheme) << QColor(40, 40, 40) << QString::fromLatin1(scheme);
    }
}

void tst_background::textsCanBeReadOnEveryScheme()
{
    QFETCH(QColor, ground);
    QFETCH(QString, scheme);
    QApplication::setPalette(QPalette(ground));
    Window window;
    PaintFormBackground(&window, scheme);
    const QImage image = window.grab().toImage();
    // Where the ground passes the middle between black and white no text has more than 4.58 on a single line.
    for (const QLabel *label : std::as_const(window.labels))
        QVERIFY2(leastContrast(image, label->y(), label->geometry().bottom(), textColor(label)) >= 3.8,
            qPrintable(QString::number(label->y())));
    QVERIFY(leastContrast(image, 100, 120, textColor(window.group)) >= 3.8);
    QVERIFY(leastContrast(image, 120, 140, textColor(window.box)) >= 3.8);
    if (scheme == QLatin1String("OTHER"))
        QVERIFY(leastContrast(image, 0, 400, textColor(window.labels.first())) >= 4.5);
    QCOMPARE(textColor(window.inside), QApplication::palette().color(QPalette::WindowText).rgb());
    QVERIFY2(image.pixel(299, 0) != image.pixel(299, 399), "a gradient, not a plain ground");
    window.resize(300, 2000); // the texts stand on other colours then
    const QImage high = window.grab().toImage();
    for (const QLabel *label : std::as_const(window.labels))
        QVERIFY(leastContrast(high, label->y(), label->geometry().bottom(), textColor(label)) >= 3.8);
}

/// A box from the line before to the second line behind, and the next one over it.
void tst_background::linesAreThoseOfTheBands()
{
    for (const int height : {1, 2, 3, 400, 401}) {
        for (const char *scheme : {"GRAY", "other"}) {
            QWidget window;
            window.resize(20, height);
            PaintFormBackground(&window, QLatin1String(scheme));
            const QImage image = window.grab().toImage();
            const QVector<QRgb> bands = schemeBands(QLatin1String(scheme), height, {247, 251, 254, 134, 200, 253});
            QImage expected(20, height, QImage::Format_RGB32);
            QPainter painter(&expected);
            for (qsizetype band = 0; band < bands.size(); ++band)
                painter.fillRect(
                    QRect(QPoint(-1, int(band) * 2 - 1), QPoint(20, int(band) * 2 + 2)), QColor(bands[band]));
            painter.end();
            QCOMPARE(image.convertToFormat(QImage::Format_RGB32), expected);
        }
    }
}

void tst_background::aPartPaintedAloneIsTheSame()
{
    QWidget window;
    window.resize(120, 300);
    PaintFormBackground(&window, QStringLiteral("BackCyan"));
    const QImage whole = window.grab().toImage();
    for (const QRect &part : {QRect(0, 0, 5, 5), QRect(50, 101, 30, 1), QRect(119, 280, 1, 20)})
        QCOMPARE(window.grab(part).toImage(), whole.copy(part));
}

void tst_background::otherEndsHalfWay()
{
    QWidget window;
    window.resize(300, 200);
    PaintFormBackground(&window, QStringLiteral("other"));
    const QImage image = window.grab().toImage();
    QCOMPARE(image.pixelColor(299, 0), QColor(247, 251, 254));
    QCOMPARE(image.pixelColor(299, 199), QColor(190, 225, 253));
    ApplyColorMenu(3);
}

void tst_background::anUnknownNamePaintsNothing()
{
    QWidget plain;
    plain.resize(40, 40);
    const QImage before = plain.grab().toImage();
    PaintFormBackground(&plain, QStringLiteral("PINK"));
    QCOMPARE(plain.grab().toImage(), before);
    PaintFormBackground(&plain, QStringLiteral("red"));
    PaintFormBackground(&plain, QStringLiteral("PINK"));
    QCOMPARE(plain.grab().toImage(), before);
}

QTEST_MAIN(tst_background)
#include "tst_background.moc"
