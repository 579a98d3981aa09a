#pragma once

#include <QtGlobal>

namespace WaveMonitor {

/// Mixed into every part of a viewer next to its toolkit base. The domain tells the viewers of one
/// program apart: a part reacts to notifications of its own domain alone. Parts also publish it as
/// the property "domain", since that is how a receiver reads it from a sender.
class Localized
{
public:
    virtual ~Localized() = default;
    virtual quint64 domain() const { return m_domain; }
    virtual void setDomain(const quint64 &domain) { m_domain = domain; }

private:
    quint64 m_domain = 0;
};

} // namespace WaveMonitor
