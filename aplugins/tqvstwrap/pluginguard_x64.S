// The 64-bit guard routine: calls the body in a frame whose unwind data names the guard's handler.
    .intel_syntax noprefix
    .text

// Offsets shared with pluginguard.cpp: GuardFrame::stackPointer, and where this routine keeps its
// GuardFrame* (kFrameSlot, from the establisher frame).
    .set FRAME_STACK_POINTER, 0
    .set FRAME_SLOT, 192
// The body's 32 home bytes, xmm6-xmm15, the frame slot; keeps rsp 16-aligned.
    .set LOCALS, 200

// int tq_guard_call(GuardFrame* frame, void (*body)(void*), void* arg)
// Saves every non-volatile register, so landing here needs nothing but the stack pointer: the
// vectored fallback lands with whatever registers the faulting code had.
    .globl tq_guard_call
    .def tq_guard_call; .scl 2; .type 32; .endef
    .seh_proc tq_guard_call
tq_guard_call:
    .seh_handler tq_guard_handler, @except, @unwind
    push rbp
    .seh_pushreg rbp
    push rbx
    .seh_pushreg rbx
    push rsi
    .seh_pushreg rsi
    push rdi
    .seh_pushreg rdi
    push r12
    .seh_pushreg r12
    push r13
    .seh_pushreg r13
    push r14
    .seh_pushreg r14
    push r15
    .seh_pushreg r15
    sub rsp, LOCALS
    .seh_stackalloc LOCALS
    movaps [rsp+32], xmm6
    .seh_savexmm xmm6, 32
    movaps [rsp+48], xmm7
    .seh_savexmm xmm7, 48
    movaps [rsp+64], xmm8
    .seh_savexmm xmm8, 64
    movaps [rsp+80], xmm9
    .seh_savexmm xmm9, 80
    movaps [rsp+96], xmm10
    .seh_savexmm xmm10, 96
    movaps [rsp+112], xmm11
    .seh_savexmm xmm11, 112
    movaps [rsp+128], xmm12
    .seh_savexmm xmm12, 128
    movaps [rsp+144], xmm13
    .seh_savexmm xmm13, 144
    movaps [rsp+160], xmm14
    .seh_savexmm xmm14, 160
    movaps [rsp+176], xmm15
    .seh_savexmm xmm15, 176
    .seh_endprologue
    mov [rsp+FRAME_SLOT], rcx
    mov [rcx+FRAME_STACK_POINTER], rsp
    mov rcx, r8
    call rdx
    .globl tq_guard_return
tq_guard_return:
    mov eax, 1
    jmp .Lrestore
.Llanding:
    xor eax, eax
.Lrestore:
    movaps xmm6, [rsp+32]
    movaps xmm7, [rsp+48]
    movaps xmm8, [rsp+64]
    movaps xmm9, [rsp+80]
    movaps xmm10, [rsp+96]
    movaps xmm11, [rsp+112]
    movaps xmm12, [rsp+128]
    movaps xmm13, [rsp+144]
    movaps xmm14, [rsp+160]
    movaps xmm15, [rsp+176]
    add rsp, LOCALS
    pop r15
    pop r14
    pop r13
    pop r12
    pop rdi
    pop rsi
    pop rbx
    pop rbp
    ret
    .seh_endproc

// Entered, never called, with a GuardFrame* in rax: by RtlUnwindEx (the return value it installs)
// or by the vectored fallback's context. Switches to that guard's stack and returns 0 from its
// tq_guard_call.
    .globl tq_guard_resume
    .def tq_guard_resume; .scl 2; .type 32; .endef
tq_guard_resume:
    mov rsp, [rax+FRAME_STACK_POINTER]
    jmp .Llanding
