#include "app/settings.h"
#include "shell/frmPreferences.h"
#include "viewer/frmMainViewer.h"

// What the settings' bulk writing stores as well: written at the change, nothing is lost with a program that ends
// badly.

namespace {

QByteArray numbered(const char *key, int index)
{
    return key + QByteArray::number(index);
}

/// The viewer shows a change of its options at once.
void layOutViewer()
{
    if (isLoaded<frmMainViewer>() && form<frmMainViewer>().isVisible())
        form<frmMainViewer>().Form_Resize();
}

}

void frmPreferences::storeChanges()
{
    writeBox(chkStretch, "PrvStretch");
    writeBox(chkCountFileTypes, "CountFileType");
    writeBox(chkCountFileSize, "CountFileSize");
    writeBox(chkCountFileColorDepth, "CountFileColorDepth");
    storeQuality(txtJPGQuality, "JPEGQuality");
    storeQuality(txtJPG2000Quality, "JPEG2000Quality");
    for (int i = optPhotoCDSize.first; i <= optPhotoCDSize.last; ++i) {
        connect(optPhotoCDSize[i], &QRadioButton::toggled, this, [this, i](bool on) {
            if (on)
                writeOption("PCDSize", QString::number(i));
        });
    }
    const auto storeTypes = [this](const auto &boxes, const char *key) {
        for (int i = boxes.first; i <= boxes.last; ++i) {
            connect(boxes[i], &QCheckBox::toggled, this,
                [this, name = numbered(key, i)](bool on) { writeOption(name.constData(), QString::number(int(on))); });
        }
    };
    storeTypes(chkFileType, "IncludeFileType");
    storeTypes(chkPolyFileType, "IncludePolyFileType");
    storeTypes(chkAVFileType, "IncludeAVFileType");

    connect(chkStretch, &QCheckBox::toggled, this, [this] {
        if (!LoadingSettings)
            layOutViewer();
    });
}

void frmPreferences::storeQuality(QLineEdit *text, const char *key)
{
    connect(text, &QLineEdit::textChanged, this, [this, key](const QString &typed) {
        const double value = leadingNumber(typed);
        if (value >= 1 && value <= 100)
            writeOption(key, typed);
    });
}
