#pragma once

#include "randomtrigger.h"

#include <capture/registerimage.h>
#include <capture/samplecutter.h>
#include <config/standardconfig.h>
#include <support/bittext.h>

#include <coremodel.h>

#include <memory>

/// The simulated core of a design, behind the registers that the program writes.
class SimulatedCore final
{
public:
    SimulatedCore(RandomTrigger &design) : m_core(design.core())
    {
        const auto description = Sim::readDescription(
            KEO::saveStandardConfig(design.cores).toLatin1(), QStringLiteral("design.zeo"));
        if (!description) {
            reports.append(description.error());
            return;
        }
        const Sim::CoreDescription &core = description->cores.first();
        Sim::CoreStimulus stimulus;
        stimulus.captured = matrixOf(design, core.captured);
        for (size_t port = 0; port < core.ports.size(); ++port)
            stimulus.ports[port] = matrixOf(design, core.ports[port]);
        m_model = std::make_unique<Sim::CoreModel>(
            core, stimulus, false, [this](const QString &text) { reports.append(text); });
    }

    void program()
    {
        for (const auto &word :
             KEO::buildRegisterImage(m_core, {}, true) + KEO::buildExpressionImage(m_core)) {
            if (const Sim::ShiftWord parsed = Sim::parseShiftWord(word);
                parsed.kind != Sim::ShiftWord::Kind::CoreSelect)
                m_model->shiftIn(parsed);
        }
    }
    void start(int command)
    {
        const int width = m_core.requiredRegisterWidth();
        m_model->shiftIn(Sim::parseShiftWord(
            bitsOf(QStringLiteral("01001") + QString(16, u'0') + binary(quint64(command), width))));
    }
    void advance(qint64 samples) { m_model->advance(samples); }
    [[nodiscard]] bool isArmed() const { return m_model->isArmed(); }
    /// A window as the program cuts it out.
    [[nodiscard]] QList<QBitArray> window(int number) const
    {
        int places = 1;
        while (places < m_core.window_num)
            places *= 2;
        const int first = m_core.storage_depth / places * number;
        const QBitArray block = m_model->readBlock(quint16(first), m_core.capture_amount);
        QBitArray rows(block.size() - 33);
        for (qsizetype bit = 0; bit < rows.size(); ++bit)
            rows.setBit(bit, block.testBit(32 + bit));
        return KEO::cutSamples({rows}, KEO::captureGeometry(m_core));
    }

    QStringList reports;

private:
    static Sim::BitMatrix matrixOf(const RandomTrigger &design, const QStringList &names)
    {
        Sim::BitMatrix matrix{int(names.size())};
        for (qsizetype sample = 0; sample < design.nets.front().size(); ++sample) {
            matrix.appendRow();
            for (int column = 0; column < names.size(); ++column) {
                if (design.net(names[column]).testBit(sample))
                    matrix.setInLastRow(column);
            }
        }
        return matrix;
    }

    const KEO::CoreConfig &m_core;
    std::unique_ptr<Sim::CoreModel> m_model;
};
