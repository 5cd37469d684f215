# Gives ITqVstEffect::Process's output buffer a size routine of its own in widl's proxy code.
# widl makes one size routine per method and points every computed size of that method at it, so
# without this the output is sized by the input's channel count: a mono or input-less host would
# get back only part of its output, or none. Run as: cmake -DFILE=tqvst_p.c -P this file.
file(READ ${FILE} code)
string(FIND "${code}" "ITqVstEffect_ProcessExprEval_0001" done)
if(NOT done EQUAL -1)
    return()
endif()

set(input_size "pS->inputChannels * pS->frames")
set(routine_head "static void __RPC_USER ITqVstEffect_ProcessExprEval_0000(")
string(FIND "${code}" "${routine_head}" head)
string(FIND "${code}" "static const EXPR_EVAL ExprEvalRoutines[] =" table)
if(head EQUAL -1 OR table EQUAL -1)
    message(FATAL_ERROR "${FILE}: no size routine for Process")
endif()
math(EXPR length "${table} - ${head}")
string(SUBSTRING "${code}" ${head} ${length} routine)
string(REPLACE "_0000(" "_0001(" output_routine "${routine}")
string(REPLACE "${input_size}" "pS->outputChannels * pS->frames" output_routine "${output_routine}")
if(output_routine STREQUAL routine)
    message(FATAL_ERROR "${FILE}: the size routine of Process is not the input's")
endif()
string(REPLACE "static const EXPR_EVAL ExprEvalRoutines[] =\n{\n    ITqVstEffect_ProcessExprEval_0000,\n"
               "${output_routine}static const EXPR_EVAL ExprEvalRoutines[] =\n{\n    ITqVstEffect_ProcessExprEval_0000,\n    ITqVstEffect_ProcessExprEval_0001,\n"
               patched "${code}")

# The second computed size in Process is the output's: it takes the new routine, index 1.
set(reference "0x20,\t/* Corr desc: parameter in Process */\n        0x59,\t/* FC_CALLBACK */\n        NdrFcShort(0x0),")
string(FIND "${patched}" "${reference}" first)
if(first EQUAL -1)
    message(FATAL_ERROR "${FILE}: no size reference in Process")
endif()
string(LENGTH "${reference}" reference_length)
math(EXPR after "${first} + ${reference_length}")
string(SUBSTRING "${patched}" 0 ${after} before_text)
string(SUBSTRING "${patched}" ${after} -1 after_text)
string(FIND "${after_text}" "${reference}" second)
if(second EQUAL -1)
    message(FATAL_ERROR "${FILE}: no size reference for the output of Process")
endif()
string(SUBSTRING "${after_text}" 0 ${second} between)
math(EXPR rest "${second} + ${reference_length}")
string(SUBSTRING "${after_text}" ${rest} -1 tail)
string(REPLACE "NdrFcShort(0x0)," "NdrFcShort(0x1)," output_reference "${reference}")
file(WRITE ${FILE} "${before_text}${between}${output_reference}${tail}")
