#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns SIGINT, SIGTERM and SIGHUP into a signal of the event loop. One instance at a time, on the main
/// thread.
class Interruption : public QObject {
    Q_OBJECT

public:
    explicit Interruption(QObject* parent = nullptr);
    ~Interruption() override;

    /// The number of the first signal received; 0: none.
    static int signal();

Q_SIGNALS:
    void interrupted(int signal);

private:
    int m_pipe[2] = {-1, -1};
    QSocketNotifier* m_notifier = nullptr;
};
