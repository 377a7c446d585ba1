#include "platform/Dispatch.h"
