#pragma once

#include "actions/conversion.h"
#include "engine/polyimage.h"
#include "support/support.h"

#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QSet>

/// A client of a run: entries, options, scripted answers, and a log of all that it was told and asked.
class TestClient : public ConversionClient
{
public:
    TestClient() = default;
    explicit TestClient(std::initializer_list<int> types)
    {
        for (const int type : types)
            settings.types.set(std::size_t(type));
    }

    ConversionOptions settings;
    QStringList entries;
    QSet<int> selected;
    QVector<MessageBox::Answer> answers; ///< used again from the start when they come to an end; No without any
    int cancelAt = 0; ///< number of the yield that sets the flag, counted from 1
    std::function<void(int number)> atYield;
    bool cancelFlag = false;
    bool ends = false; ///< the program ends
    QString root; ///< left out of the log

    QStringList log;
    QVector<MessageBox> boxes;
    QVector<ConversionOutcome> outcomes;
    int yields = 0;

    ConversionOptions options() const override { return settings; }
    int entryCount() const override { return int(entries.size()); }
    QString entry(int index) const override { return entries.value(index); }
    bool isSelected(int index) const override { return selected.contains(index); }
    void letEventsIn(const std::function<bool()> &ready) override
    {
        log << QStringLiteral("yield");
        if (++yields == cancelAt)
            cancelFlag = true;
        if (atYield)
            atYield(yields);
        ConversionClient::letEventsIn(ready);
    }
    bool cancelled() const override { return cancelFlag; }
    void clearCancel() override { cancelFlag = false; }
    bool goesOn() const override { return !ends; }
    MessageBox::Answer ask(const MessageBox &box) override
    {
        boxes << box;
        log << QStringLiteral("ask ") + local(box.text);
        return answers.isEmpty() ? box.defaultAnswer : answers.at((boxes.size() - 1) % answers.size());
    }
    void showPercent(int percent) override { log << QString::number(percent) + u'%'; }
    void showFiles(const QString &from, const QString &to) override
    {
        log << QStringLiteral("%1 > %2").arg(local(from), local(to));
    }
    void showOperation(const QString &text) override
    {
        if (!text.isEmpty())
            log << text.trimmed();
    }
    void finished(const ConversionOutcome &outcome) override { outcomes << outcome; }

    QString local(QString text) const { return text.remove(root); }
    void run(LookAhead lookAhead, PolyImage &image, Gvbox &gvbox) { runConversion(*this, image, gvbox, lookAhead); }
    void run(LookAhead lookAhead)
    {
        PolyImage image;
        Gvbox gvbox;
        run(lookAhead, image, gvbox);
    }
};

/// All files and folders below a folder, by name, with what they hold. Names in the contents do not count.
inline QMap<QString, QByteArray> treeOf(const QString &folder)
{
    QMap<QString, QByteArray> tree;
    QDirIterator it(
        folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        const bool isFile = it.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
        tree.insert(it.filePath().mid(folder.size()), isFile ? file.readAll() : QByteArray("no file"));
    }
    return tree;
}
