#pragma once
typedef int boolean_t;
