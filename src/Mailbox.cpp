#include "Mailbox.h"

#include "Arrivals.h"

#include <QCoreApplication>
#include <QEvent>

namespace ostra {

void Mailbox::post(Work work)
{
    const std::lock_guard lock(m_mutex);
    m_work.push_back(std::move(work));
    if (m_work.size() == 1) {
        QCoreApplication::postEvent(this, new QEvent(arrivalEvent()));
    }
}

void Mailbox::customEvent(QEvent * /*event*/)
{
    std::vector<Work> work;
    {
        const std::lock_guard lock(m_mutex);
        work.swap(m_work);
    }
    for (Work &item : work) {
        item();
        item = nullptr; // with everything that it holds, before the next begins
    }
}

} // namespace ostra
