#pragma once

class QWidget;

// For timing a start: once `window` has been painted the first time, writes
// "shown" on standard output and quits the application, so that a caller can
// stop its clock at that line and leave the shut-down out of the figure.
void QuitOnceShown(QWidget& window);
