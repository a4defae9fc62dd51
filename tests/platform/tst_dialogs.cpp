#include "platform/dialogs.h"
#include "platform/filefilter.h"
#include "support/support.h"

#include <QtTest>
#include <QtWidgets>

namespace {
/// Runs `work` on the dialog that comes up next, as a person would, once it is there.
template <class Dialog> void onNext(const std::function<void(Dialog &)> &work)
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, work] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer->deleteLater();
        timer->stop();
        work(*dialog);
    });
    timer->start(1);
}

void type(QFileDialog &dialog, const QString &name)
{
    auto *edit = dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    edit->setText(name);
    QMetaObject::invokeMethod(&dialog, "accept", Qt::QueuedConnection);
}

const QString pictures = QStringLiteral("Bitmap Files (*.BMP)|*.BMP|JPEG Format (*.JPG)|*.JPG;*.JPE|All|*.*|");
}

class tst_dialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void filterTextsAreRead_data();
    void filterTextsAreRead();
    void anExtensionIsAddedToABareName_data();
    void anExtensionIsAddedToABareName();
    void boxesGiveTheButtonPressed_data();
    void boxesGiveTheButtonPressed();
    void boxesShowPlainTextAndAPlainPointer();
    void openingShowsFilesOfTheFilterInAnyCase();
    void savingGivesTheFilterAndItsExtension();
    void savingAsksBeforeItReplaces();
    void cancelGivesNothing();
    void aFolderEndsInASeparator();
    void aTextAndAColourComeBack();
};

void tst_dialogs::filterTextsAreRead_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("two filters, bar at the end")
        << QStringLiteral("Show List (*.Lsl)|*.Lsl|All|*.*|")
        << QStringList{QStringLiteral("Show List (*.Lsl) (*.[lL][sS][lL])"), QStringLiteral("All (*)")};
    QTest::newRow("several patterns, no bar at the end")
        << QStringLiteral("Two |*.J2; *.b") << QStringList{QStringLiteral("Two (*.[jJ]2 *.[bB])")};
    QTest::newRow("a text without patterns shows all")
        << QStringLiteral("Any||") << QStringList{QStringLiteral("Any (*)")};
    QTest::newRow("half a pair is dropped") << QStringLiteral("A|*.a|B") << QStringList{QStringLiteral("A (*.[aA])")};
    QTest::newRow("nothing") << QString() << QStringList();
}

void tst_dialogs::filterTextsAreRead()
{
    QFETCH(QString, filter);
    QTEST(qtNameFilters(fileFilters(filter)), "names");
}

void tst_dialogs::anExtensionIsAddedToABareName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *sentence, const char *path, int filter, const char *expected) {
        QTest::newRow(sentence) << QString::fromUtf8(path) << filter << QString::fromUtf8(expected);
    };
    row("the default one", "/p/sea", 1, "/p/sea.BMP");
    row("that of another filter", "/p/sea", 2, "/p/sea.JPG");
    row("the default one under all files", "/p/sea", 3, "/p/sea.BMP");
    row("the default one under no filter", "/p/sea", 0, "/p/sea.BMP");
    row("a name that has one keeps it", "/p/sea.png", 1, "/p/sea.png");
    row("a dot in the folder is none", "/p.png/sea", 1, "/p.png/sea.BMP");
    row("a dot at the end is used", "/p/sea.", 1, "/p/sea.BMP");
    row("a dot in front is no extension", "/p/.sea", 1, "/p/.sea.BMP");
    row("a folder is no name", "/p/", 1, "/p/");
}

void tst_dialogs::anExtensionIsAddedToABareName()
{
    QFETCH(QString, path);
    QFETCH(int, filter);
    QTEST(withDefaultExtension(path, QStringLiteral("BMP"), fileFilters(pictures), filter), "expected");
    QCOMPARE(withDefaultExtension(path, QString(), fileFilters(pictures), filter), path);
}

void tst_dialogs::boxesGiveTheButtonPressed_data()
{
    using B = MessageBox::Buttons;
    using A = MessageBox::Answer;
    QTest::addColumn<int>("buttons");
    QTest::addColumn<int>("defaultAnswer");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("answer");
    const auto row = [](const char *sentence, B buttons, A defaultAnswer, Qt::Key key, A answer) {
        QTest::newRow(sentence) << int(buttons) << int(defaultAnswer) << int(key) << int(answer);
    };
    row("Enter presses the default No", B::YesNo, A::No, Qt::Key_Return, A::No);
    row("Enter presses the default Yes", B::YesNo, A::Yes, Qt::Key_Return, A::Yes);
    row("a default that is not there becomes No", B::YesNo, A::Ok, Qt::Key_Return, A::No);
    row("Escape is No", B::YesNo, A::Yes, Qt::Key_Escape, A::No);
    row("Escape is Cancel", B::OkCancel, A::Ok, Qt::Key_Escape, A::Cancel);
    row("Enter is Ok", B::OkCancel, A::Ok, Qt::Key_Return, A::Ok);
    row("Escape on a report is Ok", B::Ok, A::Ok, Qt::Key_Escape, A::Ok);
}

void tst_dialogs::boxesGiveTheButtonPressed()
{
    QFETCH(int, buttons);
    QFETCH(int, defaultAnswer);
    QFETCH(int, key);
    MessageBox box{QStringLiteral("T"), QStringLiteral("Text"), MessageBox::Icon::Question,
        MessageBox::Buttons(buttons), MessageBox::Answer(defaultAnswer)};
    onNext<QMessageBox>([key](QMessageBox &shown) {
        QWidget *target = shown.defaultButton() ? static_cast<QWidget *>(shown.defaultButton()) : &shown;
        QTest::keyClick(key == Qt::Key_Escape ? &shown : target, Qt::Key(key));
    });
    QTEST(int(dialogs().show(nullptr, box)), "answer");
}

void tst_dialogs::boxesShowPlainTextAndAPlainPointer()
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const MessageBox box{QStringLiteral("Title"), QStringLiteral("<b>a.jpg</b>"), MessageBox::Icon::Exclamation};
    onNext<QMessageBox>([&box](QMessageBox &shown) {
        QCOMPARE(shown.text(), box.text);
        QCOMPARE(shown.windowTitle(), box.title);
        QCOMPARE(shown.textFormat(), Qt::PlainText);
        QCOMPARE(shown.icon(), QMessageBox::Warning);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::ArrowCursor);
        shown.reject();
    });
    dialogs().show(nullptr, box);
    QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    QGuiApplication::restoreOverrideCursor();
}

void tst_dialogs::openingShowsFilesOfTheFilterInAnyCase()
{
    const TemporaryHome home;
    home.write(QStringLiteral("p/a.JpG"), "x");
    home.write(QStringLiteral("p/b.txt"), "x");
    FileQuestion question;
    question.title = QStringLiteral("Open");
    question.folder = home.path() + QStringLiteral("p");
    question.filter = pictures;
    onNext<QFileDialog>([](QFileDialog &dialog) {
        auto *filters = dialog.findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
        QCOMPARE(filters->itemText(1), QStringLiteral("JPEG Format (*.JPG)"));
        dialog.selectNameFilter(dialog.nameFilters().at(1));
        auto *list = dialog.findChild<QListView *>(QStringLiteral("listView"));
        QTRY_COMPARE(list->model()->rowCount(list->rootIndex()), 1);
        type(dialog, list->model()->index(0, 0, list->rootIndex()).data().toString());
    });
    const auto answer = dialogs().openFile(nullptr, question);
    QVERIFY(answer);
    QCOMPARE(answer->path, home.path() + QStringLiteral("p/a.JpG"));
}

void tst_dialogs::savingGivesTheFilterAndItsExtension()
{
    const TemporaryHome home;
    FileQuestion question{
        QStringLiteral("Save"), home.path(), QStringLiteral("sea"), pictures, QStringLiteral("BMP"), true};
    onNext<QFileDialog>([](QFileDialog &dialog) {
        QCOMPARE(dialog.findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->text(), QStringLiteral("sea"));
        auto *filters = dialog.findChild<QComboBox *>(QStringLiteral("fileTypeCombo"));
        filters->setCurrentIndex(1);
        type(dialog, QStringLiteral("lake"));
    });
    const auto answer = dialogs().saveFile(nullptr, question);
    QVERIFY(answer);
    QCOMPARE(answer->path, home.path() + QStringLiteral("lake.JPG"));
    QCOMPARE(answer->filterIndex, 2);
}

void tst_dialogs::savingAsksBeforeItReplaces()
{
    const TemporaryHome home;
    home.write(QStringLiteral("sea.BMP"), "x");
    FileQuestion question{QStringLiteral("Save"), home.path(), QString(), pictures, QStringLiteral("BMP"), true};
    int asked = 0;
    const auto answerBox = [&](QMessageBox::StandardButton button) {
        return [&asked, button](QMessageBox &box) {
            ++asked;
            QCOMPARE(box.standardButton(box.defaultButton()), QMessageBox::No);
            box.button(button)->click();
        };
    };
    onNext<QFileDialog>([&](QFileDialog &dialog) {
        onNext<QMessageBox>([&](QMessageBox &box) {
            onNext<QFileDialog>([&](QFileDialog &again) {
                onNext<QMessageBox>(answerBox(QMessageBox::Yes));
                type(again, QStringLiteral("sea.BMP"));
            });
            answerBox(QMessageBox::No)(box);
        });
        type(dialog, QStringLiteral("sea"));
    });
    const auto answer = dialogs().saveFile(nullptr, question);
    QVERIFY(answer);
    QCOMPARE(answer->path, home.path() + QStringLiteral("sea.BMP"));
    QCOMPARE(asked, 2);
    question.promptOverwrite = false;
    onNext<QFileDialog>([](QFileDialog &dialog) { type(dialog, QStringLiteral("sea")); });
    QVERIFY(dialogs().saveFile(nullptr, question));
    QCOMPARE(asked, 2);
}

void tst_dialogs::cancelGivesNothing()
{
    const TemporaryHome home;
    const FileQuestion question{QStringLiteral("Save"), home.path(), QString(), QString(), QString(), true};
    const auto cancel = [](QDialog &dialog) { dialog.reject(); };
    onNext<QDialog>(cancel);
    QVERIFY(!dialogs().saveFile(nullptr, question));
    onNext<QDialog>(cancel);
    QVERIFY(!dialogs().openFile(nullptr, question));
    onNext<QDialog>(cancel);
    QVERIFY(!dialogs().chooseFolder(nullptr, QStringLiteral("Folder"), home.path()));
    onNext<QDialog>(cancel);
    QVERIFY(!dialogs().inputText(nullptr, QStringLiteral("T"), QStringLiteral("P"), QStringLiteral("value")));
    onNext<QDialog>(cancel);
    QVERIFY(!dialogs().chooseColor(nullptr, Qt::red));
}

void tst_dialogs::aFolderEndsInASeparator()
{
    const TemporaryHome home;
    home.write(QStringLiteral("p/a.jpg"), "x");
    onNext<QFileDialog>([](QFileDialog &dialog) { type(dialog, QStringLiteral("p")); });
    QCOMPARE(dialogs().chooseFolder(nullptr, QStringLiteral("Folder"), home.path()),
        std::optional(home.path() + QStringLiteral("p/")));
}

void tst_dialogs::aTextAndAColourComeBack()
{
    for (const auto &[text, selected] :
        {std::pair("a.b.png", "a.b"), {"song.mp3", "song"}, {"2.5", "2.5"}, {".b", ".b"}}) {
        onNext<QInputDialog>([selected = selected](QInputDialog &dialog) {
            QTRY_COMPARE(dialog.findChild<QLineEdit *>()->selectedText(), QLatin1String(selected));
            dialog.accept();
        });
        const QString before = QLatin1String(text);
        QCOMPARE(dialogs().inputText(nullptr, QStringLiteral("T"), QStringLiteral("P"), before), std::optional(before));
    }
    onNext<QInputDialog>([](QInputDialog &dialog) {
        QCOMPARE(dialog.textValue(), QStringLiteral("70"));
        dialog.setTextValue(QStringLiteral("80"));
        dialog.accept();
    });
    QCOMPARE(dialogs().inputText(nullptr, QStringLiteral("T"), QStringLiteral("P"), QStringLiteral("70")),
        std::optional(QStringLiteral("80")));
    onNext<QColorDialog>([](QColorDialog &dialog) {
        QCOMPARE(dialog.currentColor(), QColor(Qt::red));
        dialog.setCurrentColor(Qt::blue);
        dialog.accept();
    });
    QCOMPARE(dialogs().chooseColor(nullptr, Qt::red), std::optional(QColor(Qt::blue)));
}

QTEST_MAIN(tst_dialogs)
#include "tst_dialogs.moc"
