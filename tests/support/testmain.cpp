#include "testmain.h"
