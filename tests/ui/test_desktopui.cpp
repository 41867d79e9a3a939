// The desktop front end of the logic's channel: a progress box never outlives its job, and
// dialogs open over the screen the user is working in.

#include "common/backgroundjob.h"
#include "common/desktopui.h"
#include "velmora/core/userinterface.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QMessageBox>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <filesystem>
#include <QtTest>

using namespace velmora;

namespace {

// The visible top-level dialogs of a kind, by object name.
int visible(const char* objectName) {
    int n = 0;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == objectName && w->isVisible())
            ++n;
    return n;
}

// Closes every modal dialog, a question by its Yes, so that a failing check never leaves one open.
void closeDialogs() {
    for (int i = 0; i < 5; ++i) {
        QWidget* w = QApplication::activeModalWidget();
        if (!w)
            return;
        if (auto* box = qobject_cast<QMessageBox*>(w); box && box->button(QMessageBox::Yes))
            box->button(QMessageBox::Yes)->click();
        else
            w->close();
    }
}

} // namespace

class TestDesktopUi : public QObject {
    Q_OBJECT

private slots:
    // A job shorter than the box's delay: the box never shows, and the next question is the
    // window that takes the answer.
    void aShortJobLeavesNoBoxOverTheNextQuestion() {
        QWidget screen;
        screen.show();
        ui::DesktopUi desktop(&screen);
        bool answered = false;
        int progressShown = -1;
        QString onTop;
        Answer answer = Answer::Cancel;
        // As in the program, the job runs from the event loop, so the question's own loop is a
        // nested one.
        QEventLoop loop;
        QTimer::singleShot(0, [&] {
            desktop.beginProgress("Reading blueprints", 10);
            desktop.progress(10, {});
            desktop.endProgress();
            // The question comes at once; it is looked at after the box's 300 ms delay has passed.
            QTimer::singleShot(450, [&] {
                progressShown = visible("velmoraProgress");
                QWidget* top = QApplication::activeModalWidget();
                onTop = top ? top->objectName() : QString();
                closeDialogs();
                answered = true;
            });
            answer = desktop.ask("Do you wish to view a list of Shapes used by this route?", Buttons::YesNo,
                                 Icon::Question, {});
            loop.quit();
        });
        QTimer::singleShot(5000, &loop, &QEventLoop::quit); // never hang on a box nobody closes
        loop.exec();
        QVERIFY(answered);
        QCOMPARE(progressShown, 0);
        QCOMPARE(onTop, QString("velmoraQuestion"));
        QCOMPARE(answer, Answer::Yes);
    }

    // A question from a tool screen opens over that screen, not over the main one.
    void dialogsOpenOverTheScreenThatAsked() {
        QWidget main;
        main.setObjectName("frmEditor");
        main.show();
        QWidget tool;
        tool.setObjectName("frmAssets");
        tool.show();
        QApplication::setActiveWindow(&tool);
        ui::DesktopUi desktop(&main);
        QWidget* parent = nullptr;
        QTimer::singleShot(0, [&] {
            if (QWidget* box = QApplication::activeModalWidget())
                parent = box->parentWidget();
            closeDialogs();
        });
        desktop.message("Selected items have been added to the grid.", Icon::Information, {});
        QCOMPARE(parent, &tool);

        // With no screen active the main screen owns it.
        QApplication::setActiveWindow(nullptr);
        tool.hide();
        QTimer::singleShot(0, [&] {
            if (QWidget* box = QApplication::activeModalWidget())
                parent = box->parentWidget();
            closeDialogs();
        });
        desktop.message("x", Icon::Information, {});
        QCOMPARE(parent, &main);
    }

    // The guide goes to the desktop as an absolute file URL; the opener's answer is passed on.
    void aLongJobRunsOffTheGuiThreadAndAsksOnIt() {
        ScriptedUi scripted;
        AbortableUi gui(scripted);
        const auto dir = std::filesystem::temp_directory_path() / "velmora-bgjob";
        AppContext ctx(dir / "home", dir / "data", gui);
        scripted.pushAnswer(Answer::Yes);
        QThread* jobThread = nullptr;
        QThread* askedOn = nullptr;
        Answer answer = Answer::Cancel;
        bool sameUi = false;
        scripted.onPrompt = [&](const ScriptedUi::Prompt&) { askedOn = QThread::currentThread(); };
        // The window stays alive: a timer of the GUI thread fires while the job works.
        int ticks = 0;
        QTimer alive;
        QObject::connect(&alive, &QTimer::timeout, [&] { ++ticks; });
        alive.start(10);
        const bool finished = ui::runInBackground(ctx, "Working", [&](UserInterface& ui) {
            jobThread = QThread::currentThread();
            sameUi = &ctx.ui() == &ui; // logic that reports through the context reaches the box
            ui.beginProgress("Reading", 10);
            for (int i = 0; i < 10; ++i) {
                ui.progress(i);
                QThread::msleep(20);
            }
            answer = ui.ask("Go on?", Buttons::YesNo, Icon::Question, {});
        });
        QVERIFY(finished);
        QVERIFY(sameUi);
        QVERIFY(jobThread && jobThread != QThread::currentThread());
        QCOMPARE(askedOn, QThread::currentThread()); // the question was asked on the GUI thread
        QCOMPARE(answer, Answer::Yes);
        QVERIFY(ticks > 3);
        QCOMPARE(&ctx.ui(), static_cast<UserInterface*>(&gui)); // the context has its own back

        // Abort on the screen stops the job at its next look.
        QTimer::singleShot(50, [&] { gui.abort(); });
        int steps = 0;
        const bool completed = ui::runInBackground(ctx, "Working", [&](UserInterface& ui) {
            for (; steps < 1000 && !ui.cancelled(); ++steps)
                QThread::msleep(5);
        });
        QVERIFY(!completed);
        QVERIFY(steps < 1000);
        std::filesystem::remove_all(dir);
    }

    void aFileIsHandedToTheDesktopAsAFileUrl() {
        ui::DesktopUi desktop;
        QList<QUrl> asked;
        bool answer = true;
        desktop.setUrlOpener([&](const QUrl& url) {
            asked << url;
            return answer;
        });
        const auto guide = std::filesystem::path("data") / "Help" / "guide with blanks.html";
        QVERIFY(desktop.openInViewer(guide));
        QCOMPARE(asked.size(), 1);
        QVERIFY(asked[0].isLocalFile());
        QCOMPARE(asked[0].toLocalFile().toStdString(), std::filesystem::absolute(guide).string());
        answer = false;
        QVERIFY(!desktop.openInViewer(guide));
    }
};

int runTestDesktopUi(int argc, char** argv) {
    TestDesktopUi t;
    return QTest::qExec(&t, argc, argv);
}

#include "test_desktopui.moc"
