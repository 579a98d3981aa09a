#pragma once

#include "fsheader.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

namespace KEO {

/// Reads the headers of fs files between the events of the event loop, so that nothing stands still
/// for a large one.
class FsHeaderQueue final : public QObject
{
    Q_OBJECT

public:
    enum class Cause { Chosen, Updated };
    Q_ENUM(Cause)

    explicit FsHeaderQueue(QObject *parent = nullptr);
    ~FsHeaderQueue() override;

    /// Begins to read the header of \a path, anew if that is being done already. A header that is
    /// read quickly is told before this returns. False if the file can't be opened.
    bool read(const QString &path, Cause cause);
    /// Reads all to their ends and tells them.
    void finish();

Q_SIGNALS:
    void headerRead(const QString &path, const KEO::FsHeader &header,
                    KEO::FsHeaderQueue::Cause cause);

private:
    struct Reading;

    void readOn();

    std::vector<std::unique_ptr<Reading>> m_readings;
    QTimer m_timer; // runs while there are readings
};

} // namespace KEO
