#pragma once

// Makes every screen of the program reachable by name through Pantallas:
// the one place that knows all the subsystems' screens.
void registrarTodas();
