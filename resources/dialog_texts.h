/* What dialogs say on both systems: for the resource script and for the code. */
#ifndef VISTEL_DIALOG_TEXTS_H
#define VISTEL_DIALOG_TEXTS_H

#define FILE_HELP_CAPTION "Help on Opening and Saving Images"
#define FILE_HELP_OPENING                                                                         \
    "Open Image shows one file. Open Animation takes the first frame of a numbered sequence and " \
    "finds the others by its number; the fields below the file list set the end frame, the zoom " \
    "and shrink factors and whether depth planes are loaded."
#define FILE_HELP_SAVING                                                                           \
    "Saving writes the shown image, or every frame of the animation, in the chosen file type. In " \
    "the name of an animation a # stands for the frame number."

#define FILE_MISSING "There is no such file."

#define SET_END_FRAME_TEXT "Set End Frame"
#define ZOOM_FACTOR_TEXT "Zoom Factor"
#define SHRINK_FACTOR_TEXT "Shrink Factor"
#define Z_BUFFER_TEXT "Z Buffer"
#define AUDIO_OFFSET_TEXT "Audio Offset:"

#endif
