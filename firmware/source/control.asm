; Control flow
