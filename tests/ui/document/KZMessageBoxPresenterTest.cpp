#include "ui/document/KZMessageBoxPresenter.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const KZQuestion kQuestion{
    QStringLiteral("Do you want to save the changes made to “a.plist”?"),
    QStringLiteral("Your changes are lost if you don't save them."),
    {QStringLiteral("Save"), QStringLiteral("Don't Save"), QStringLiteral("Cancel")},
    2};

class KZMessageBoxPresenterTest : public testing::Test
{
protected:
    KZMessageBoxPresenterTest() { _window.show(); }

    QMessageBox *box() const { return _window.findChild<QMessageBox *>(); }
    QPushButton *button(const QString &title) const
    {
        for (QAbstractButton *b : box()->buttons()) {
            if (b->text() == title)
                return static_cast<QPushButton *>(b);
        }
        return nullptr;
    }
    // The box is answered and gone.
    void expectGone()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(box(), nullptr);
    }

    QWidget _window;
    KZMessageBoxPresenter _presenter{&_window};
};

TEST_F(KZMessageBoxPresenterTest, AsksOnTheWindowAndAnswersTheButtonClicked)
{
    int answer = -1;
    _presenter.ask(kQuestion, [&answer](int button) { answer = button; });
    ASSERT_TRUE(box());
    EXPECT_EQ(box()->windowModality(), Qt::WindowModal) << "the program stays usable";
    EXPECT_EQ(box()->text(), kQuestion.title);
    EXPECT_EQ(box()->informativeText(), kQuestion.informativeText);
    EXPECT_EQ(box()->defaultButton(), button(QStringLiteral("Save")));
    EXPECT_EQ(answer, -1) << "nothing answered until a button is";

    QTest::mouseClick(button(QStringLiteral("Don't Save")), Qt::LeftButton);
    EXPECT_EQ(answer, 1);
    expectGone();
}

TEST_F(KZMessageBoxPresenterTest, EscapeAnswersTheCancelButton)
{
    int answer = -1;
    _presenter.ask(kQuestion, [&answer](int button) { answer = button; });
    ASSERT_TRUE(box());
    QTest::keyClick(box(), Qt::Key_Escape);
    EXPECT_EQ(answer, 2);
    expectGone();
}

TEST_F(KZMessageBoxPresenterTest, WithoutAWindowItAsksTheWholeProgram)
{
    KZMessageBoxPresenter alone;
    int answer = -1;
    alone.ask({QStringLiteral("Error"), QStringLiteral("bad"), {QStringLiteral("OK")}, 0},
              [&answer](int button) { answer = button; });
    QMessageBox *shown = nullptr;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *candidate = qobject_cast<QMessageBox *>(widget);
            candidate && candidate->isVisible())
            shown = candidate;
    }
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->windowModality(), Qt::ApplicationModal);
    QTest::keyClick(shown, Qt::Key_Return);
    EXPECT_EQ(answer, 0);
}

} // namespace

// Long work shows a busy dialog once it has lasted a moment; Cancel reaches
// the work, and the dialog goes with its indicator.
TEST_F(KZMessageBoxPresenterTest, ShowsProgressThatCanBeCancelled)
{
    int cancelled = 0;
    std::unique_ptr<KZProgressIndicator> indicator =
        _presenter.beginProgress(QStringLiteral("Opening “big.plist”…"), [&] { ++cancelled; });
    auto *dialog = _window.findChild<QProgressDialog *>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_FALSE(dialog->isVisible()) << "short work shows nothing";
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog->isVisible(); }));
    EXPECT_EQ(dialog->labelText(), QStringLiteral("Opening “big.plist”…"));
    EXPECT_FALSE(dialog->isModal()) << "the other windows stay usable";

    auto *cancel = dialog->findChild<QPushButton *>();
    ASSERT_NE(cancel, nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    EXPECT_EQ(cancelled, 1);
    indicator.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(_window.findChild<QProgressDialog *>(), nullptr);
}
