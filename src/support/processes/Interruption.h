#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Ctrl-C, SIGTERM and a closed terminal, as an event in the loop. One instance at a time.
class Interruption : public QObject {
    Q_OBJECT

public:
    explicit Interruption(QObject* parent = nullptr);
    ~Interruption() override;

    /// The first signal that came; 0: none.
    static int signal();

Q_SIGNALS:
    void interrupted(int signal);

private:
    int m_pipe[2] = {-1, -1};
    QSocketNotifier* m_notifier = nullptr;
};
