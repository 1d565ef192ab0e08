// One call of each exported function, with answers that hold on an empty machine.
#pragma once

// Fails the running test for each answer that is wrong.
void CallEveryExport();
