#pragma once

#include <QMainWindow>

#include <functional>

/// A document's main window. Closing asks first: the close goes ahead only
/// when `mayClose` answers yes (it may ask the user to save), and the window
/// then says so with `windowClosed`.
class ADPlistWindow : public QMainWindow
{
    Q_OBJECT

public:
    using CloseQuestion = std::function<void(std::function<void(bool mayClose)> answer)>;

    explicit ADPlistWindow(QWidget *parent = nullptr);

    void setCloseQuestion(CloseQuestion question) { _mayClose = std::move(question); }
    /// Closes with no question: what it would ask about is gone already.
    void closeWithoutAsking();

signals:
    void windowClosed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    CloseQuestion _mayClose;
    bool _closeAgreed = false;
};
