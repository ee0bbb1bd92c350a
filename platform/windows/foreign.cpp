#include "platform/foreign.h"

// The guard. A C++ exception of the platform's usual compiler is a structured exception, which
// looks for its handler along the chain of frames that starts at fs:0, while GCC's unwinder follows
// tables and knows nothing of that chain. So a guarded call puts a frame into the chain and notes
// its caller's registers there. When the exception comes, the module's own frames are unwound and
// the registers restored, as if the caller had called ThrowForeign instead of the module; from
// there GCC's unwinder finds its way.
//
// The exception object is left alone. The module's run-time destroys one that was thrown again
// while its frames are unwound, and its exception arrives here like any other: a destructor called
// from here could be the second.
//
// An operation takes its arguments off the stack, a function does not, and the guard does not know
// how many there are. It passes a copy of the greatest number, and takes off as many as were taken
// off the copy.
//
// The chain and the frames exist in 32-bit programs only, so a 64-bit build has no guard.

#ifndef _WIN64

extern "C" [[noreturn]] void ThrowForeign() {
  throw ForeignException();
}

__asm__(R"(
        .set    MOST_OPERATIONS, 32
        .set    MOST_WORDS, 8
        .set    CPP_EXCEPTION, 0xE06D7363
        .set    UNWINDING, 2 | 4                # the flags of a call that only tells of unwinding

        .text

# The operations of a stand-in: the slot, in bytes, to eax.
        .balign 16
operations:
        .set    slot, 0
        .rept   MOST_OPERATIONS
        .balign 16
        movl    $slot, %eax
        jmp     operation
        .set    slot, slot + 4
        .endr

# From a stand-in (ecx) to its object.
operation:
        movl    4(%ecx), %ecx
        movl    (%ecx), %edx
        movl    (%edx,%eax), %eax
        movl    $8, %edx                        # the arguments lie behind ebp and return address
        jmp     guarded

# CallGuarded(function, arguments...)
        .globl  _CallGuarded
_CallGuarded:
        movl    4(%esp), %eax
        movl    $12, %edx                       # behind the function, too

# Calls eax with its arguments, which lie edx bytes above the new ebp; ecx goes with them.
guarded:
        pushl   %ebp
        movl    %esp, %ebp
        pushl   %ebx
        pushl   %esi
        pushl   %edi
        pushl   $handler
        pushl   %fs:0
        movl    %esp, %fs:0
        leal    (%ebp,%edx), %esi
        movl    %ecx, %edx
        subl    $4 * MOST_WORDS, %esp
        movl    %esp, %edi
        movl    $MOST_WORDS, %ecx
        cld
        rep movsl
        movl    %edx, %ecx
        movl    %esp, %ebx
        call    *%eax
        movl    %esp, %ecx
        subl    %ebx, %ecx                      # what was taken off the copy
        leal    -20(%ebp), %esp
        popl    %fs:0
        popl    %edx
        popl    %edi
        popl    %esi
        popl    %ebx
        popl    %ebp
        popl    %edx
        addl    %ecx, %esp
        jmp     *%edx

# handler(record, frame, ...): what Windows asks when an exception has come to the frame.
handler:
        movl    4(%esp), %eax
        cmpl    $CPP_EXCEPTION, (%eax)
        jne     1f
        testl   $UNWINDING, 4(%eax)
        jne     1f
        movl    8(%esp), %edx
        pushl   $0
        pushl   %eax
        pushl   $0
        pushl   %edx
        call    _RtlUnwind@16                   # only the stack pointer is sure to come back as it was
        movl    8(%esp), %esp
        popl    %fs:0
        popl    %edx
        popl    %edi
        popl    %esi
        popl    %ebx
        popl    %ebp
        jmp     _ThrowForeign
1:      movl    $1, %eax                        # no: the search goes on
        ret

        .section .rdata,"dr"
        .globl  _theGuardedOperations
        .balign 4
_theGuardedOperations:
        .set    slot, 0
        .rept   MOST_OPERATIONS
        .long   operations + 4 * slot
        .set    slot, slot + 4
        .endr

        .text
)");

#endif
