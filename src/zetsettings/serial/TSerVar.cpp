#include "zetsettings/serial/TSerVar.h"

// The two widths the wire knows, compiled once here.
template class TSerVar<unsigned char>;
template class TSerVar<unsigned int>;
