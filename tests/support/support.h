#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QTemporaryDir>

/// Gives a test a home of its own: HOME and the XDG folders point into a temporary folder, the store and AppFolder too.
/// Make one as the first member of a test class or at the start of a test function.
class TemporaryHome
{
public:
    TemporaryHome();
    /// The folder with a separator behind it.
    QString path() const;
    /// Writes a file below the home and gives its full path; folders on the way are made.
    QString write(const QString &name, const QByteArray &bytes) const;
    /// Saves a picture made in code; the format follows the name.
    QString writePicture(const QString &name, QSize size, QRgb color = 0xff336699) const;

private:
    QTemporaryDir m_folder;
};

/// The folder of the sample files with a separator; empty when it is not there, and then said loudly.
QString samplesFolder();
#define SKIP_WITHOUT_SAMPLES()                                                                                         \
    do {                                                                                                               \
        if (samplesFolder().isEmpty())                                                                                 \
            QSKIP("SAMPLES MISSING: this test needs ../shared/samples beside the project");                            \
    } while (false)

/// Lets the program find its loadable modules in the build tree, also when a test is started by hand.
void useBuiltModules();

/// A ramp: every pixel differs from its neighbours.
QImage rampImage(QSize size, QImage::Format format = QImage::Format_RGB32);
