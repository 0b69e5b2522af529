#pragma once

namespace thermal {

/// From now on SIGINT, SIGTERM and SIGHUP end the program within moments with code 130, whatever its threads
/// are doing: what is not complete is taken back. To be called once, before there is another thread.
void endOnInterrupts();

} // namespace thermal
