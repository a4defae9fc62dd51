#pragma once

#include "app/globals.h"
#include "engine/decode.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// What the tests of the two save commands share: a shown Main Viewer with entries in its Display list.
class SaveTest : public QObject
{
protected:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    QString home() const { return m_home->path(); }
    const TemporaryHome &homeFolder() const { return *m_home; }
    bool start()
    {
        useBuiltModules();
        m_home = std::make_unique<TemporaryHome>();
        return showMainViewer();
    }
    ScriptedDialogs &fresh()
    {
        window().ClearDisplayList();
        return ScriptedDialogs::install();
    }
    void show(const QString &path)
    {
        window().tabFileList->setCurrentIndex(1);
        window().lstDisplay->addItem(path);
        window().lblCount->setText(QString::number(window().lstDisplay->count()));
        window().lstDisplay->selectOnly(window().lstDisplay->count() - 1);
    }
    QString writePng(const QString &name, const QImage &image) const
    {
        const QString path = m_home->path() + name;
        return image.save(path, "PNG") ? path : QString();
    }
    static Picture read(const QString &path)
    {
        const auto picture = decodeFile(path);
        return picture ? *picture : Picture();
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
};
