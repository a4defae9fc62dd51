#include "thumbnails/frmDataBase.h"

#include "app/settings.h"
#include "platform/folders.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailsize.h"
#include "thumbnails/thumbnailwork.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <QPointer>

// A yield may close the records, open others, or unload this window: what goes on after it looks whether they are still
// the same.

namespace {

/// The size that a text names; none for all records.
std::optional<int> sizeOf(const QString &text)
{
    if (text == QLatin1String("All"))
        return {};
    const int size = text.toInt();
    return isThumbnailSize(size) && text == QString::number(size) ? size : currentThumbnailSize();
}

int in16Bits(int value)
{
    return qBound(-32768, value, 32767);
}

QString dateText(QDate date)
{
    return date.toString(QStringLiteral("MM/dd/yyyy"));
}

}

frmDataBase::frmDataBase(QWidget *parent)
    : FormWindow(parent)
{
    setWindowTitle(tr("DB Demo"));
    ImageBox1.setPolyJpegQuality(thumbnailJpegQuality);
    Opt_Store->setChecked(true);
    for (int index = Cmd_Move.first; index <= Cmd_Move.last; ++index) {
        connect(Cmd_Move[index], &QPushButton::clicked, this, [this, index] {
            Move_Click(index);
            showFields();
        });
    }
    connect(Cmd_Delete, &QPushButton::clicked, this, &frmDataBase::Delete_Click);
    connect(Cmd_Store, &QPushButton::clicked, this, [this] {
        Store_Click(Opt_Store->isChecked(), txtImageName->text(), txtImageHeight->text().toInt(),
            txtImageWidth->text().toInt(), QDate::fromString(txtImageDate->text(), QStringLiteral("MM/dd/yyyy")));
    });
}

void frmDataBase::Form_Load()
{
    OpenImagesDatabase(QString());
}

void frmDataBase::Form_QueryUnload(bool &cancel)
{
    cancel = m_working;
}

void frmDataBase::Form_Unload()
{
    CloseDatabase();
    m_database.settle();
}

// --- opening and closing

void frmDataBase::OpenImagesDatabase(const QString &size)
{
    if (m_working)
        return;
    ++m_openings;
    m_opened = size;
    m_current.reset();
    m_database.select(sizeOf(size));
    // A file that opens and shows its damage then is set aside by a second opening.
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::optional<int> records;
        if (m_database.open(AppFolder())) {
            records = m_database.count();
            if (records.value_or(0) > 0)
                m_current = m_database.first();
        }
        DatabaseOpen = records.has_value() && !m_database.isDamaged();
        if (DatabaseOpen) {
            RecordTotal = m_current || m_database.isWriting() ? *records : 0;
            break;
        }
        if (!m_database.isDamaged())
            return;
    }
    if (!DatabaseOpen)
        return;
    if (RecordTotal == 0) {
        showEmpty();
        return;
    }
    CurrentRecord = 1;
    showPosition();
    Cmd_Move[0]->setEnabled(false);
    loadPicture();
}

void frmDataBase::showEmpty()
{
    CurrentRecord = 0;
    RecordTotal = 0;
    showPosition();
    for (QPushButton *button : Cmd_Move)
        button->setEnabled(false);
    Cmd_Delete->setEnabled(false);
}

void frmDataBase::CloseDatabase()
{
    if (!DatabaseOpen || m_working)
        return;
    ++m_openings;
    m_current.reset();
    m_database.close();
}

/// After something was not found: the file may be damaged, or not be there any more.
void frmDataBase::reopenIfDamaged()
{
    if (m_database.isDamaged() || m_database.isMoved())
        OpenImagesDatabase(m_opened);
}

// --- the current record

void frmDataBase::showPosition()
{
    Lbl_Cap->setText(QStringLiteral("%1/%2").arg(CurrentRecord).arg(RecordTotal));
}

void frmDataBase::showFields()
{
    const ImageRecord record = m_current.value_or(ImageRecord());
    txtImageName->setText(record.name);
    txtImageHeight->setText(QString::number(record.height));
    txtImageWidth->setText(QString::number(record.width));
    txtImageDate->setText(dateText(record.date));
    txtCompressionMode->setText(QString::number(record.compressionMode));
    txtThumbnailDate->setText(dateText(record.thumbnailDate));
    txtThumbnailSize->setText(QString::number(record.thumbnailSize));
}

/// The picture of the current record; what ImageBox1 holds stays when there is none that can be read.
bool frmDataBase::loadPicture()
{
    return m_current && mayBeThumbnail(m_current->picture) && ImageBox1.ImageBlobLoad(unsealedBlob(m_current->picture));
}

/// Reads the record that it stands on from the file, where it is not known yet. False when there is none.
bool frmDataBase::standOnRecord()
{
    if (!m_current)
        m_current = m_database.first();
    else if (m_current->id == 0)
        m_current = (m_database.settle(), m_database.find(m_current->name, m_current->thumbnailSize));
    return m_current.has_value();
}

bool frmDataBase::Find_Click(const QString &name, int size)
{
    if (RecordTotal <= 0 || m_working)
        return false;
    std::optional<ImageRecord> found = m_database.find(name, size);
    if (!found) {
        m_current.reset();
        reopenIfDamaged();
        return false;
    }
    m_current = std::move(found);
    // A picture that cannot be read is as good as none: it is made and stored again.
    if (!loadPicture())
        return false;
    showFields();
    return true;
}

void frmDataBase::Store_Click(bool isNew, const QString &name, int height, int width, QDate date)
{
    const std::optional<int> level = number(option("ThumbnailCompressionLevel", "1"));
    if (m_working || !level || (!isNew && !m_current && !standOnRecord()))
        return;
    // What is stored is what the caller has put there, where the caller stood, whatever the events bring.
    const int opening = m_openings;
    const QPointer<frmDataBase> here(this);
    const std::optional<ImageRecord> stoodOn = m_current;
    const PolyImage box = ImageBox1;
    const Encoded encoded = m_encoded;
    ImageRecord record;
    record.name = name;
    record.height = in16Bits(height);
    record.width = in16Bits(width);
    record.date = date;
    record.compressionMode = in16Bits(*level);
    record.thumbnailDate = QDate::currentDate();
    record.thumbnailSize = box.PictureWidth();
    Yield();
    const bool hasPicture = thumbnailFormat(*level).has_value();
    if (hasPicture) {
        const bool isEncoded = encoded.picture && encoded.picture == box.held() && encoded.level == *level;
        record.picture = isEncoded ? encoded.blob : encodedThumbnail(box.held(), *level);
        if (record.picture.isEmpty())
            return;
    }
    Yield();
    if (!here || !isStill(opening) || m_working)
        return;
    const bool counts = !m_database.selection() || m_database.selection() == record.thumbnailSize;
    const bool adds = isNew && counts && !m_database.contains(name, record.thumbnailSize);
    m_current = stoodOn;
    if (isNew ? !m_database.add(record) : !change(record, !hasPicture)) {
        reopenIfDamaged();
        return;
    }
    m_current = record;
    RecordTotal += adds ? 1 : 0;
    Yield();
    if (!here || !isStill(opening) || m_working)
        return;
    CurrentRecord = RecordTotal;
    showPosition();
    Cmd_Move[1]->setEnabled(false);
    if (RecordTotal > 1) {
        Cmd_Move[0]->setEnabled(true);
        Cmd_Delete->setEnabled(true);
    }
}

void frmDataBase::setPicture(const std::shared_ptr<const LoadedPicture> &picture, int level, const QByteArray &blob)
{
    ImageBox1.setPolyPicture(picture);
    m_encoded = {picture, level, blob};
}

bool frmDataBase::Holds(const QString &name, int size)
{
    const auto selected = m_database.selection();
    return RecordTotal > 0 && !m_working && m_database.isOpen() && (!selected || selected == size)
        && m_database.contains(name, size);
}

/// Writes into the record that it stands on. Under the same key that is the same as storing it anew, which does not
/// wait.
bool frmDataBase::change(const ImageRecord &record, bool keepPicture)
{
    const bool sameKey = m_current->name == record.name && m_current->thumbnailSize == record.thumbnailSize;
    if (sameKey && !keepPicture)
        return m_database.add(record);
    return standOnRecord() && m_database.change(m_current->id, record, keepPicture);
}

void frmDataBase::Move_Click(int index)
{
    if (m_working)
        return;
    std::optional<ImageRecord> there;
    if (index == 0 && CurrentRecord >= 2) {
        --CurrentRecord;
        Cmd_Move[1]->setEnabled(true);
        there = standOnRecord() ? m_database.previous(*m_current) : std::nullopt;
    } else if (index != 0 && CurrentRecord < RecordTotal) {
        ++CurrentRecord;
        Cmd_Move[0]->setEnabled(true);
        there = standOnRecord() ? m_database.next(*m_current) : std::nullopt;
    }
    if (there)
        m_current = std::move(there);
    if (CurrentRecord == 1)
        Cmd_Move[0]->setEnabled(false);
    if (CurrentRecord == RecordTotal)
        Cmd_Move[1]->setEnabled(false);
    showPosition();
    loadPicture();
    reopenIfDamaged();
}

void frmDataBase::Delete_Click()
{
    if (RecordTotal <= 0 || m_working)
        return;
    if (standOnRecord() && !m_database.remove(m_current->id)) {
        reopenIfDamaged();
        return;
    }
    m_current.reset();
    --RecordTotal;
    CurrentRecord = 1;
    if (RecordTotal < 1)
        Cmd_Move[1]->setEnabled(false);
    Cmd_Move[0]->setEnabled(false);
    if (RecordTotal == 0) {
        Cmd_Delete->setEnabled(false);
        CurrentRecord = 0;
    }
    showPosition();
}
