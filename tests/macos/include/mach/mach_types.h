#pragma once
typedef unsigned int mach_port_t;
typedef int kern_return_t;
