#pragma once

// The compiler's 128-bit integers, for products and quotients that pass 64 bits on the way to a result.
__extension__ typedef __int128 nxInt128;
__extension__ typedef unsigned __int128 nxUInt128;
