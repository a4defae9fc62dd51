#include "actions/saveoptions.h"

#include "engine/rounding.h"
#include "shell/frmPreferences.h"

SaveOptions saveOptionsOfPreferences()
{
    const auto &preferences = form<frmPreferences>();
    const auto numberIn = [](const QLineEdit *field) { return qBound(0.0, leadingNumber(field->text()), 100.0); };
    SaveOptions options;
    options.jpegFastSaves = preferences.chkJPGFastSaves->isChecked();
    options.jpegQuality = roundToInt(numberIn(preferences.txtJPGQuality));
    options.jpeg2000Quality = numberIn(preferences.txtJPG2000Quality);
    options.diffusePBM = preferences.chkDiffusePBM->isChecked();
    options.diffusePGM = preferences.chkDiffusePGM->isChecked();
    options.diffuseWBMP = preferences.chkDiffuseWBMP->isChecked();
    options.diffuseXBM = preferences.chkDiffuseXBM->isChecked();
    options.diffuseXPM = preferences.chkDiffuseXPM->isChecked();
    return options;
}
