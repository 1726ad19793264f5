// The messages of the event log, as the library's message table holds them. Read by the resource compilers
// too: plain #defines only.
//
// An entry is its length in bytes, which is a multiple of 4 and counts itself and the word after it, that
// word (0: 8-bit text), and the text filled up with NULs. driver_event.h checks the lengths.
#pragma once

#define MESSAGE_CLOCK_SOURCE_NOT_VALID 0x40070001L
#define MESSAGE_CLOCK_SOURCE_NOT_VALID_LENGTH 56
#define MESSAGE_CLOCK_SOURCE_NOT_VALID_TEXT "The external sample clock source is not valid.\r\n\0\0\0\0"

#define MESSAGE_MASTER_CLOCK_RATE 0x40070002L
#define MESSAGE_MASTER_CLOCK_RATE_LENGTH 96
#define MESSAGE_MASTER_CLOCK_RATE_TEXT \
    "The master clock sample rate does not match the sample rate selected in your application.\r\n\0"

#define MESSAGE_INPUT_DATA_RATE 0x40070003L
#define MESSAGE_INPUT_DATA_RATE_LENGTH 108
#define MESSAGE_INPUT_DATA_RATE_TEXT                                                         \
    "The incoming digital data sample rate does not match the sample rate selected in your " \
    "application.\r\n\0\0\0\0"

#define MESSAGE_CLOSED_WHILE_BUSY 0x40070004L
#define MESSAGE_CLOSED_WHILE_BUSY_LENGTH 76
#define MESSAGE_CLOSED_WHILE_BUSY_TEXT \
    "The application tried to close the driver while it was still busy.\r\n\0\0\0\0"

#define FIRST_MESSAGE MESSAGE_CLOCK_SOURCE_NOT_VALID
#define LAST_MESSAGE MESSAGE_CLOSED_WHILE_BUSY
