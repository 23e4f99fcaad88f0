// Resource and command ids of the viewer, shared by prismview.rc and the code.
#pragma once

#define IDR_MENU 1
#define IDR_ACCEL 2

#define IDM_OPEN 101
#define IDM_EXIT 102
#define IDM_PRINT 103
#define IDM_PRINTER_SETUP 104

#define IDM_FIT 201
#define IDM_ACTUAL 202
#define IDM_ZOOM_IN 203
#define IDM_ZOOM_OUT 204
#define IDM_CENTRE 205
#define IDM_NEGATIVE 206
#define IDM_LOWMEM 207
#define IDM_LENS 208
