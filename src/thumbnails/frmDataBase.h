#pragma once

#include "engine/polyimage.h"
#include "thumbnails/imagesdatabase.h"
#include "ui/controls.h"
#include "ui/form.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <functional>

/// The hidden window that owns the only connection to the thumbnail cache, the current record and the picture control
/// of it. Its controls are a record browser that nobody sees; they show where it stands.
///
/// The cache never fails loudly: what cannot be read is not found, what cannot be written is left, and a damaged file
/// begins anew from its template.
class frmDataBase : public FormWindow
{
    Q_OBJECT
public:
    explicit frmDataBase(QWidget *parent = nullptr);

    PolyImage ImageBox1; ///< the picture found last, and the one that is stored next
    CONTROL(txtImageName, QLineEdit);
    CONTROL(txtImageHeight, QLineEdit);
    CONTROL(txtImageWidth, QLineEdit);
    CONTROL(txtImageDate, QLineEdit);
    CONTROL(txtCompressionMode, QLineEdit);
    CONTROL(txtThumbnailDate, QLineEdit);
    CONTROL(txtThumbnailSize, QLineEdit);
    CONTROL_ARRAY(Cmd_Move, QPushButton, 0, 1); ///< 0 back, 1 on
    CONTROL(Cmd_Delete, QPushButton);
    CONTROL(Cmd_Store, QPushButton);
    CONTROL(Opt_Store, QRadioButton); ///< Cmd_Store adds a record instead of changing the current one
    CONTROL(Lbl_Cap, QLabel); ///< "3/17"

    /// The records can be used; true also when there are none. CloseDatabase leaves it as it is.
    bool DatabaseOpen = false;
    int CurrentRecord = 0; ///< 1-based, as far as moving tells; 0 when there is no record
    int RecordTotal = 0;

    void Form_Load() override;
    void Form_QueryUnload(bool &cancel) override;
    void Form_Unload() override;
    /// The records of `size`, "60" to "200" in steps of 10 or "All"; of the current thumbnail size for any other text.
    void OpenImagesDatabase(const QString &size);
    void CloseDatabase();
    /// The thumbnail of a file at a size is in ImageBox1 afterwards. Its age is not looked at.
    bool Find_Click(const QString &name, int size);
    /// Stores the picture in ImageBox1 as a new record, or into the one that was found. Lets events in three times.
    void Store_Click(bool isNew, const QString &name, int height, int width, QDate date);
    /// Puts a picture into ImageBox1 together with what encodedThumbnail() has made of it at a compression level, so
    /// that storing it takes no time.
    void setPicture(const std::shared_ptr<const LoadedPicture> &picture, int level, const QByteArray &blob);
    /// Whether Find_Click would find a record, if its picture can be read. Changes nothing.
    bool Holds(const QString &name, int size);
    /// 0 moves back, anything else on.
    void Move_Click(int index);
    void Delete_Click();
    /// Empties what is open, or the whole table, with events let in. False when that failed.
    bool DeleteAllOfSizeClick();
    bool DeleteAllClick();
    /// Lets events in. True when it ran.
    bool CompactDatabase();
    /// Fills frmDatabaseStats.
    void DatabaseStats();
    /// The length of the database file in bytes, with all in it that was stored; 0 when there is none.
    qint64 FileSize();

private:
    struct Encoded
    {
        std::shared_ptr<const LoadedPicture> picture;
        int level = 0;
        QByteArray blob;
    };
    void showEmpty();
    void showPosition();
    void showFields();
    bool loadPicture();
    bool standOnRecord();
    bool change(const ImageRecord &record, bool keepPicture);
    void reopenIfDamaged();
    bool isStill(int opening) const { return opening == m_openings && m_database.isOpen(); }
    bool runBeside(const std::function<bool()> &work, const std::function<void()> &interrupt);
    ImagesDatabase m_database;
    Encoded m_encoded;
    std::optional<ImageRecord> m_current; ///< none stands for the first
    QString m_opened; ///< the text that the open records were chosen by
    int m_openings = 0; ///< grows with each opening and closing; work that finds another number after a yield ends
    bool m_working = false; ///< long work has the database; nothing else may touch it
};
