#pragma once

namespace ostra {

/// Makes the process one in which a write can only fail, never harm: to be called before anything else.
void prepareProcess();

}  // namespace ostra
