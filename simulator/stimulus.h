#pragma once

#include "bits.h"
#include "coremodel.h"
#include "outcome.h"

#include <QList>
#include <QMap>
#include <QStringList>

class QIODevice;

namespace Sim {

/// What to look at in a dump: the nets of each list, whenever the clock has its edge.
struct SamplingPlan
{
    QString clock;
    bool fallingEdge = false;
    QList<QStringList> nets;
};

struct SampledNets
{
    QList<BitMatrix> tables; ///< one for each list of nets, a column a net, a row an edge
    QStringList missing;     ///< sentences about nets that read as 0 because the dump lacks them
};

/// Bounds on what a dump may ask for. Sampling stops at \a samples edges of a clock, or earlier
/// when the tables reach \a bits in all.
struct SamplingLimits
{
    qint64 samples = 1 << 20;
    qint64 bits = qint64(1) << 31;
};

/// Samples a dump as flip-flops would: a row holds the values just before the edge, so a net that
/// changes with the edge shows its old value. X and Z are 0. A clock's first value is no edge. A
/// plan whose clock is missing or never has its edge is an error.
Outcome<QList<SampledNets>> sampleNets(QIODevice &dump, const QList<SamplingPlan> &plans,
                                       const SamplingLimits &limits = {});

/// The stimulus of each core of a design, in order. \a renamed gives the dump's name of a net that
/// the description calls otherwise. Sentences about missing nets are appended to \a missing.
Outcome<QList<CoreStimulus>> readStimulus(QIODevice &dump, const QList<CoreDescription> &cores,
                                          const QMap<QString, QString> &renamed,
                                          QStringList *missing);

/// The same for the signals of a lite core.
Outcome<BitMatrix> readLiteStimulus(QIODevice &dump, const LiteCoreDescription &core,
                                    const QMap<QString, QString> &renamed, QStringList *missing);

} // namespace Sim
