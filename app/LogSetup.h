#pragma once

// Lets the log write into two files in the installation directory, which it makes if it has to.
void configureLog();
