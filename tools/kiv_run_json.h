// kiv-run --json: requests on the standard input, a JSON object a line; answers on the standard output, one a
// line, in their order. docs/debugger.md tells the form.
#pragma once

class run_bench;

// Until the input ends. Throws run_failure when the build has no JSON, or the output is gone.
void answer_requests(run_bench &bench);
