#pragma once
// Modal dialogs block the test that opens them, so what a test does inside one is handed over
// beforehand: the watcher polls for the next modal window and runs the test's hand on it.
#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <functional>

namespace kitra::testing {

class ModalWatcher {
public:
    // Runs `hand` on the first modal window (of that object name, when one is given) that shows
    // up within a few seconds, once.
    explicit ModalWatcher(std::function<void(QWidget&)> hand, QString name = QString())
        : hand_(std::move(hand)), name_(std::move(name)) {
        timer_.setInterval(10);
        QObject::connect(&timer_, &QTimer::timeout, [this] { Poll(); });
        clock_.start();
        timer_.start();
    }

    // True once a modal window was handed to the test.
    bool Seen() const { return seen_; }
    QString SeenName() const { return seenName_; }

private:
    void Poll() {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal != nullptr && modal->isVisible() && (name_.isEmpty() || modal->objectName() == name_)) {
            timer_.stop();
            seen_ = true;
            seenName_ = modal->objectName();
            hand_(*modal);
        } else if (clock_.elapsed() > 5000) {
            timer_.stop();
        }
    }

    std::function<void(QWidget&)> hand_;
    QString name_;
    QTimer timer_;
    QElapsedTimer clock_;
    bool seen_ = false;
    QString seenName_;
};

}  // namespace kitra::testing
