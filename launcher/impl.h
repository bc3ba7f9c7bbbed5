// The top-level run.
#pragma once

/// Loads and runs the product's managed application with the arguments after the program's name. 0 once the application
/// has run, whatever it returned; -1 when it could not be loaded. Every exception passes. The arguments are not copied.
int Impl(int argc, char** argv);
