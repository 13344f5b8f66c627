// Stand-in for the Maya devkit header of the same name.
#pragma once

#include <iostream>

using std::cerr;
using std::cin;
using std::clog;
using std::cout;
using std::endl;
using std::flush;
using std::ios;
using std::iostream;
using std::istream;
using std::ostream;
using std::streampos;
using std::ws;
