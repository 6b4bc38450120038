#pragma once

namespace simulator {

// The texts of help/.
extern const char main_help[];
extern const char run_help[];
extern const char demo_help[];
extern const char option_help[]; // the end of both
extern const char panel_help[];
extern const char explain_help[];

} // namespace simulator
