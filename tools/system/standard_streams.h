// Standard input, output and error of the process.
#pragma once

namespace kestvox {

// Those that the process was started without become ones that nothing can be read from or written to.
// Otherwise a file that is opened later would take their place, and what is said would be written into it.
void OccupyStandardStreams();

}  // namespace kestvox
