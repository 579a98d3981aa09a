#pragma once

#include "projectparts.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QWidget;

namespace KEO {

enum class RunKind { Single, Auto };

/// The runs of a project in a window, from Start to the last wave. The project may be closed or
/// deleted, and this with it, inside each of the signals, inside those of the data manager and
/// while a box shows.
class RunControl final : public QObject
{
    Q_OBJECT

public:
    RunControl(const ProjectParts &parts, QObject *parent) : QObject(parent), m_parts(parts) {}

    /// Starts over the cable with that name if the programmer's chain allows it. The old waves go,
    /// their arrangement and names stay.
    void start(RunKind kind, const QString &cable);
    /// All of a window is there: shows it, as the next round of an Auto run or in a new tab.
    void show(int core, int window);
    /// The run is over.
    void complete(int resultID);

    void stop();
    void forceTrigger();

Q_SIGNALS:
    /// What the user may do now may have changed.
    void changed();
    /// A window has been shown, or a round of an Auto run.
    void shown();
    /// A run begins, and takes the waves of the one before away.
    void wavesGoing();

private:
    void keepWaves();
    void giveFocusBack();

    const ProjectParts m_parts;
    QPointer<QWidget> m_focusBefore; ///< what had the keyboard when the run began
};

} // namespace KEO
