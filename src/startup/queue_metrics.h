// The queue's state as numbers for a monitoring system, in the text format of Prometheus.
#pragma once

#include <iosfwd>
#include <vector>

#include "letters/letter_queue.h"

namespace tenora {

void PrintQueueMetrics(const std::vector<QueuedRun>& runs,
                       const std::vector<PresentWorker>& workers, std::ostream& output);

}  // namespace tenora
