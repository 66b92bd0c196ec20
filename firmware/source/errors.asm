; Errors
error:  JR error
