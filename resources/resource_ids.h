#ifndef CVAS_RESOURCE_IDS_H
#define CVAS_RESOURCE_IDS_H
/* Resource identifiers shared by the code and the resource scripts: plain
   defines, which both the C++ compiler and the resource compiler read. */

/* The submitted-tracks list: image 0 marks a failed submission, image 1 a
   successful one. */
#define IDI_SUBMIT_FAILED 228
#define IDI_SUBMIT_OK 222

#endif
