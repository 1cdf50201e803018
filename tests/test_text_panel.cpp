// The Text Overlay dock and its effects dialog, driven as an operator drives them: a word typed,
// enlarged, boxed in a colour picked in the colour dialog and dragged on the preview is found in
// the recording exactly where the preview showed it; a scrolling text runs across the preview and
// comes again after its pass; the list follows the engine (a schedule's text greyed and out of
// reach), refuses an eleventh text with a box, switches a text off from its row, and Cancel
// leaves the text as it was. Screenshots in both languages.

#include "GuiSupport.h"
#include "app/Language.h"
#include "app/Theme.h"
#include "engine/Engine.h"
#include "panels/TextEffectDialog.h"
#include "panels/TextOverlayPanel.h"
#include "panels/TextPreviewWidget.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

namespace {

const QString kGrey =
    "lavfi://color=c=0x404040:size=1280x720:rate=30[out0];anullsrc=r=48000:cl=stereo[out1]";
const QColor kBox(20, 90, 220);

bool near(const QColor &c, const QColor &want, int tolerance)
{
    return qAbs(c.red() - want.red()) < tolerance && qAbs(c.green() - want.green()) < tolerance &&
           qAbs(c.blue() - want.blue()) < tolerance;
}

// The bounds of the pixels within `area` near `colour`, and how many there are.
QRect boundsOf(const QImage &image, QRect area, const QColor &colour, int tolerance,
               int *count = nullptr)
{
    QRect bounds;
    int found = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (near(image.pixelColor(x, y), colour, tolerance)) {
                bounds |= QRect(x, y, 1, 1);
                ++found;
            }
    if (count)
        *count = found;
    return bounds;
}

// Clicks a check box on its box (a row-wide box takes no click far right of its words).
void tick(QCheckBox *box)
{
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
}

void typeInto(QAbstractSpinBox *box, const QString &value)
{
    box->selectAll();
    QTest::keyClicks(box, value);
}

// The row of the overlay `id` in a list, invalid when it is not listed.
QModelIndex rowOf(QListView *list, int id)
{
    const QAbstractItemModel *model = list->model();
    for (int row = 0; row < model->rowCount(); ++row)
        if (model->index(row, 0).data(Qt::UserRole).toInt() == id)
            return model->index(row, 0);
    return {};
}

// Adds a text through the dialog as typed.
void addText(TextOverlayPanel &panel, const QString &words)
{
    onNextDialog<TextEffectDialog>([words](TextEffectDialog *dialog) {
        QTest::keyClicks(named<QPlainTextEdit>(dialog, "Overlay text"), words);
        QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
    });
    QTest::mouseClick(named<QPushButton>(&panel, "Add Text"), Qt::LeftButton);
}

} // namespace

class TestTextPanel : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QDir().mkpath("screenshots");
        applyDarkTheme(*qApp); // as the window has it
    }

    void placedTextIsRecordedWhereThePreviewShowedIt()
    {
        Engine engine;
        engine.setChannelSource(0, kGrey);
        engine.cutTo(0);
        QTRY_COMPARE_WITH_TIMEOUT(engine.programSize(), QSize(1280, 720), 10000);
        TextOverlayPanel panel(&engine);
        panel.resize(360, 280);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));

        const QPoint target(120, 200); // scene units
        QRect shownBox;
        QSize shownPicture;
        onNextDialog<TextEffectDialog>([&](TextEffectDialog *dialog) {
            QTest::keyClicks(named<QPlainTextEdit>(dialog, "Overlay text"), "Selvane");
            typeInto(named<QSpinBox>(dialog, "Font size"), "60");
            tick(named<QCheckBox>(dialog, "Background"));
            onNextDialog<QColorDialog>([](QColorDialog *colours) {
                colours->setCurrentColor(kBox);
                colours->accept();
            });
            QTest::mouseClick(named<QPushButton>(dialog, "Background color"), Qt::LeftButton);

            // Take the text by its letters and drag it; the numbers follow.
            TextPreviewWidget *preview = dialog->preview();
            const QPoint grip =
                preview->toWidget(preview->scenePosition()).toPoint() + QPoint(6, 6);
            const QPoint to = preview->toWidget(target).toPoint() + QPoint(6, 6);
            QTest::mousePress(preview, Qt::LeftButton, {}, grip);
            for (int step = 1; step <= 8; ++step)
                QTest::mouseMove(preview, grip + (to - grip) * step / 8, 10);
            QTest::mouseRelease(preview, Qt::LeftButton, {}, to);
            QVERIFY(qAbs(named<QSpinBox>(dialog, "Text X")->value() - target.x()) <= 1);
            QVERIFY(qAbs(named<QSpinBox>(dialog, "Text Y")->value() - target.y()) <= 1);

            const QImage shown = preview->grab().toImage();
            const QRect picture = preview->pictureRect();
            shownBox = boundsOf(shown, picture, kBox, 20).translated(-picture.topLeft());
            shownPicture = picture.size();
            QVERIFY(dialog->grab().save("screenshots/text_dialog_en.png"));
            QVERIFY(engine.textOverlays().isEmpty()); // nothing on air before OK
            QTest::mouseClick(named<QPushButton>(dialog, "OK"), Qt::LeftButton);
        });
        QTest::mouseClick(named<QPushButton>(&panel, "Add Text"), Qt::LeftButton);
        QCOMPARE(engine.textOverlays().size(), 1);
        QVERIFY2(shownBox.width() > 40, qPrintable(QString::number(shownBox.width())));

        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = QDir(m_dir.path()).filePath("text.mp4");
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy started(&engine, &Engine::outputsStarted);
        QCOMPARE(engine.startOutputs(settings), selvane::Problem());
        QVERIFY(started.wait(10000));
        QTest::qWait(2000);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(15000));
        const QString png = QDir(m_dir.path()).filePath("text.png");
        QVERIFY(runFfmpeg({"-ss", "1", "-i", settings.encoder.filePath, "-frames:v", "1", png}));
        const QImage frame(png);
        QCOMPARE(frame.size(), QSize(1280, 720));

        // The box where the preview showed it, scaled from its picture to the recording's.
        const double sx = 1280.0 / shownPicture.width(), sy = 720.0 / shownPicture.height();
        const QRect expected(qRound(shownBox.x() * sx), qRound(shownBox.y() * sy),
                             qRound(shownBox.width() * sx), qRound(shownBox.height() * sy));
        const QRect recorded = boundsOf(frame, frame.rect(), kBox, 40);
        const QString both = QString("recorded %1,%2 %3x%4, preview %5,%6 %7x%8")
                                 .arg(recorded.x())
                                 .arg(recorded.y())
                                 .arg(recorded.width())
                                 .arg(recorded.height())
                                 .arg(expected.x())
                                 .arg(expected.y())
                                 .arg(expected.width())
                                 .arg(expected.height());
        const int slack = qRound(2 * sx) + 6;
        QVERIFY2(qAbs(recorded.left() - expected.left()) <= slack &&
                     qAbs(recorded.top() - expected.top()) <= slack &&
                     qAbs(recorded.right() - expected.right()) <= slack &&
                     qAbs(recorded.bottom() - expected.bottom()) <= slack,
                 qPrintable(both));
        // Red letters inside the box, the plain grey around it.
        int letters = 0;
        boundsOf(frame, recorded, QColor(255, 0, 0), 70, &letters);
        QVERIFY2(letters > 500, qPrintable(QString::number(letters)));
        for (const QPoint outside : {recorded.topLeft() - QPoint(30, 30),
                                     recorded.bottomRight() + QPoint(30, 30), QPoint(40, 40)})
            QVERIFY2(near(frame.pixelColor(outside), QColor(0x40, 0x40, 0x40), 16),
                     qPrintable(frame.pixelColor(outside).name()));
    }

    void scrollingTextRunsAcrossThePreviewAndAgain()
    {
        TextOverlayData start;
        start.text = "Ticker";
        TextEffectDialog dialog(start);
        dialog.setProgramSize(QSize(640, 360));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        tick(named<QCheckBox>(&dialog, "Scroll text"));
        auto *direction = named<QComboBox>(&dialog, "Scroll direction");
        direction->setCurrentIndex(direction->findText("Right to Left"));
        typeInto(named<QSpinBox>(&dialog, "Scroll speed"), "50");
        // The letters enter at the right, leave at the left, and after a pause come again.
        TextPreviewWidget *preview = dialog.preview();
        int last = -1; // the letters' left edge, -1 while nothing is shown
        int entries = 0;
        QElapsedTimer clock;
        clock.start();
        while (entries < 2 && clock.elapsed() < 10000) {
            QTest::qWait(40);
            const QRect shown =
                boundsOf(preview->grab().toImage(), preview->pictureRect(), QColor(255, 0, 0), 60);
            const int left = shown.isEmpty() ? -1 : shown.left();
            if (last < 0 && left >= 0 && clock.elapsed() > 200)
                ++entries;
            // (the edge may step back a little where a gap between letters meets the clip)
            QVERIFY2(last < 0 || left < 0 || left <= last + 8, "the text moved back");
            last = left;
        }
        QVERIFY2(entries >= 2, qPrintable(QString::number(entries)));
        dialog.reject();
        QCOMPARE(dialog.data(), start);
    }

    void aPastedBookIsCutToTheLongestText()
    {
        TextEffectDialog dialog(TextOverlayData{});
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        auto *words = named<QPlainTextEdit>(&dialog, "Overlay text");
        QTest::keyClicks(words, "News: ");
        QGuiApplication::clipboard()->setText(QString(3 * TextOverlayData::kMaxTextLength, 'x'));
        QTest::keySequence(words, QKeySequence::Paste);
        QCOMPARE(words->toPlainText().size(), TextOverlayData::kMaxTextLength);
        QVERIFY(words->toPlainText().startsWith("News: xxx"));
        QTest::keyClicks(words, "more"); // typing stops at the limit too
        QCOMPARE(words->toPlainText().size(), TextOverlayData::kMaxTextLength);
        const QList<QLabel *> notes = dialog.findChildren<QLabel *>();
        QVERIFY(std::any_of(notes.cbegin(), notes.cend(), [](const QLabel *l) {
            return l->isVisible() && l->text().contains("at most 10000 characters");
        }));
        dialog.reject();
    }

    void listFollowsTheEngineAndKeepsItsLimits()
    {
        Engine engine;
        TextOverlayPanel panel(&engine);
        panel.resize(360, 300);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        auto *list = named<QListView>(&panel, "Text overlays");
        auto *remove = named<QPushButton>(&panel, "Remove Text");

        // A schedule's text is listed, greyed and out of the panel's reach.
        TextOverlayData scheduled;
        scheduled.id = 1000;
        scheduled.text = "From the schedule";
        engine.setTextOverlay(scheduled);
        QCOMPARE(list->model()->rowCount(), 1);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualRect(list->model()->index(0, 0)).center());
        QVERIFY(!(list->model()->index(0, 0).flags() & Qt::ItemIsEnabled));
        QVERIFY(!remove->isEnabled());

        // Texts added from the dialog take the smallest free ids; a removed id is used again.
        addText(panel, "first");
        addText(panel, "second");
        QCOMPARE(list->model()->rowCount(), 3);
        QVERIFY(rowOf(list, 1).isValid() && rowOf(list, 2).isValid());
        list->setCurrentIndex(rowOf(list, 1));
        QTest::mouseClick(remove, Qt::LeftButton);
        QVERIFY(!rowOf(list, 1).isValid());
        list->setCurrentIndex(rowOf(list, 2));
        QTest::mouseClick(named<QPushButton>(&panel, "Duplicate Text"), Qt::LeftButton);
        QVERIFY(rowOf(list, 1).isValid());
        QCOMPARE(rowOf(list, 1).data().toString(), QString("second"));
        // The copy is the one chosen now, and stays chosen while other rows come and go.
        QCOMPARE(panel.selectedId(), 1);
        engine.removeTextOverlay(1000);
        QCOMPARE(panel.selectedId(), 1);

        // Its row's box takes a text off the program.
        list->setFocus();
        list->setCurrentIndex(rowOf(list, 2));
        QTest::keyClick(list, Qt::Key_Space);
        const auto record = [&engine](int id) {
            for (const TextOverlayData &text : engine.textOverlays())
                if (text.id == id)
                    return text;
            return TextOverlayData{};
        };
        QCOMPARE(record(2).enabled, false);
        QCOMPARE(rowOf(list, 2).data(Qt::CheckStateRole).value<Qt::CheckState>(), Qt::Unchecked);

        // Cancel leaves the text as it was, whatever was changed in the dialog.
        const TextOverlayData before = record(2);
        TextOverlayData edited;
        onNextDialog<TextEffectDialog>([&edited](TextEffectDialog *dialog) {
            auto *words = named<QPlainTextEdit>(dialog, "Overlay text");
            words->moveCursor(QTextCursor::End);
            QTest::keyClicks(words, " changed");
            typeInto(named<QSpinBox>(dialog, "Font size"), "90");
            tick(named<QCheckBox>(dialog, "Shadow"));
            edited = dialog->data();
            QTest::mouseClick(named<QPushButton>(dialog, "Cancel"), Qt::LeftButton);
        });
        const QPoint row = list->visualRect(rowOf(list, 2)).center();
        QTest::mousePress(list->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, row);
        QCOMPARE(edited.text, QString("second changed"));
        QVERIFY(edited.fontPointSize == 90 && edited.shadow);
        QCOMPARE(record(2), before);

        // Ten in all (some from elsewhere); an eleventh is refused with a box.
        for (int id = 20; engine.textOverlays().size() < 10; ++id) {
            TextOverlayData text;
            text.id = id;
            text.text =
                QString("Text number %1, long enough to be cut short at the edge of the list")
                    .arg(id);
            engine.setTextOverlay(text);
        }
        QCOMPARE(list->model()->rowCount(), 10);
        QTest::mouseClick(named<QPushButton>(&panel, "Add Text"), Qt::LeftButton);
        auto *box = panel.findChild<QMessageBox *>("textOverlayMessage");
        QVERIFY(box);
        QTRY_VERIFY(box->isVisible());
        QVERIFY2(box->text().contains("10"), qPrintable(box->text()));
        QCOMPARE(engine.textOverlays().size(), 10);
        box->close();

        QVERIFY(panel.grab().save("screenshots/text_panel_en.png"));
        auto *add = named<QPushButton>(&panel, "Add Text");
        auto *edit = named<QPushButton>(&panel, "Edit Text");
        QVERIFY(installUiTranslator(true));
        QTRY_COMPARE(add->text(),
                     QCoreApplication::translate("selvane::TextOverlayPanel", "Add..."));
        QVERIFY(panel.grab().save("screenshots/text_panel_zh.png"));
        list->setCurrentIndex(rowOf(list, 2));
        bool shot = false;
        onNextDialog<TextEffectDialog>([&shot](TextEffectDialog *dialog) {
            shot = dialog->grab().save("screenshots/text_dialog_zh.png");
            dialog->reject();
        });
        QTest::mouseClick(edit, Qt::LeftButton);
        QVERIFY(shot);
        installUiTranslator(false);
        QTRY_COMPARE(add->text(), QString("Add..."));
        QCOMPARE(record(2), before);
    }
};

SELVANE_GUI_TEST_MAIN(TestTextPanel)
#include "test_text_panel.moc"
